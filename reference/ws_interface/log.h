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

inline void LogInformation(const std::string& text) {
  base::IBaseLogInterface::GetLogInstance()->WriteLog(20, base::GetTid(), "[REFERENCE_WS_INTERFACE]%s", text.c_str());
}

inline void LogFailure(const std::string& text) {
  base::IBaseLogInterface::GetLogInstance()->WriteLog(60, base::GetTid(), "[REFERENCE_WS_INTERFACE]%s", text.c_str());
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
