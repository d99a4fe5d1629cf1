// The transport results that are no libcurl code, and the bound on an answer.
#ifndef REFERENCE_COMMON_HTTP_RESULT_H
#define REFERENCE_COMMON_HTTP_RESULT_H

#include <cstddef>
#include <cstdint>

namespace reference {

constexpr std::int32_t kAnswerTooLong = -21;
constexpr std::int32_t kNotStarted = -22;

constexpr std::size_t kMaximumAnswerBytes = std::size_t{1} << 20;

}  // namespace reference

#endif
