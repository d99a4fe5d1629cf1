// Reads the JSON text of an answer into its record. The text comes from the network: every field is checked for
// presence, type, range and length, and nothing in it can make these functions throw or recurse deeply.
//
// Threads: free functions without state. Ownership: the record is the caller's.
#ifndef REFERENCE_PASS_INTERFACE_ANSWER_PARSER_H
#define REFERENCE_PASS_INTERFACE_ANSWER_PARSER_H

#include <cstddef>
#include <string>
#include <string_view>

#include "pass_interface/instance_info.h"

namespace pass_interface {

// What the signalling's records hold: a session that does not fit could never be used, only cached.
constexpr std::size_t kMaximumSessionBytes = 255;
constexpr std::size_t kMaximumLines = 64;
constexpr std::size_t kMaximumStrategies = 256;

// True: the answer is filled; one whose code is not 0 has only its header. False: problem names the key and what is
// allowed, never a text of the answer's, or the want of memory, and the answer keeps its defaults except for the
// requestTag if that was read.
bool ParsePhoneConnectAnswer(std::string_view text, InstanceInfo& answer, std::string& problem) noexcept;
bool ParseRefreshSessionAnswer(std::string_view text, RefreshSessionRsp& answer, std::string& problem) noexcept;

}  // namespace pass_interface

#endif
