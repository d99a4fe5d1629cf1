// The JSON bodies of the requests.
//
// Threads: free functions without state. Ownership: values.
#ifndef REFERENCE_PASS_INTERFACE_REQUEST_BODY_H
#define REFERENCE_PASS_INTERFACE_REQUEST_BODY_H

#include <cstdint>
#include <string>

namespace pass_interface {

// Who asks; part of every request.
struct Identity {
  std::string credential1;
  std::string credential2;
  std::string credential3;
  std::string version;
};

std::string PhoneConnectBody(const Identity& identity, const char* targetId, const char* text1, const char* text2);
std::string RefreshSessionBody(const Identity& identity, const char* sessionId, const char* text, std::int32_t value);

}  // namespace pass_interface

#endif
