// The service's own results: what Initialise and the requests return other than 0, and the transport results that are
// no libcurl code. A transport result above 0 is the CURLcode.
#ifndef REFERENCE_PASS_INTERFACE_PASS_RESULT_H
#define REFERENCE_PASS_INTERFACE_PASS_RESULT_H

#include <cstddef>
#include <cstdint>

#include "reference/common/http_result.h"

namespace pass_interface {

// Results of an operation.
constexpr std::int32_t kNotInitialised = -1;
constexpr std::int32_t kStopped = -2;
// A text or the sink is null.
constexpr std::int32_t kNullArgument = -3;
// A text has more than kMaximumTextBytes.
constexpr std::int32_t kTextTooLong = -4;
// The base URL is not http(s)://host[:port][/path].
constexpr std::int32_t kBadBaseUrl = -5;
// A time-out is 0 or above kMaximumTimeOutMs.
constexpr std::int32_t kBadTimeOut = -6;
// kMaximumOutstandingRequests are waiting for their answers.
constexpr std::int32_t kTooManyRequests = -7;
// libcurl or the system has no thread, memory or handle to give, or libcurl lacks TLS.
constexpr std::int32_t kNoResources = -8;

// Transport results.
constexpr std::int32_t kMalformedAnswer = -20;
using reference::kAnswerTooLong;
using reference::kNotStarted;

constexpr std::size_t kMaximumTextBytes = 4096;
using reference::kMaximumAnswerBytes;
constexpr std::uint32_t kMaximumTimeOutMs = 600000;
constexpr std::size_t kMaximumOutstandingRequests = 64;

}  // namespace pass_interface

#endif
