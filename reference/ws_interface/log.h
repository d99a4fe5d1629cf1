// The log lines of this library, under its tag.
//
// Threads: any. Nothing secret may be passed: no credential, no session id.
#ifndef REFERENCE_WS_INTERFACE_LOG_H
#define REFERENCE_WS_INTERFACE_LOG_H

#include <algorithm>
#include <string>
#include <string_view>

#include "base/base_log_interface.h"
#include "base/thread_id.h"

namespace reference::ws {

constexpr const char* kLogTag = "[REFERENCE_WS_INTERFACE]";

// Both take no memory of their own: what failed for want of it can be told.
inline void LogInformation(const char* subject, const char* text) noexcept {
  base::IBaseLogInterface::GetLogInstance()->WriteLog(20, base::GetTid(), "%s%s: %s", kLogTag, subject, text);
}

inline void LogFailure(const char* subject, const char* text) noexcept {
  base::IBaseLogInterface::GetLogInstance()->WriteLog(60, base::GetTid(), "%s%s: %s", kLogTag, subject, text);
}

// A text from outside, made harmless for a log line.
inline std::string Printable(std::string_view text) {
  constexpr std::size_t kMaxShown = 128;
  std::string shown(text.substr(0, kMaxShown));
  std::replace_if(
      shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return shown;
}

}  // namespace reference::ws

#endif
