// Runs a step of a service's thread so that no exception leaves it, be it for want of memory: the thread goes on with
// its other work.
//
// Threads: any. Ownership: none.
#ifndef REFERENCE_COMMON_GUARDED_H
#define REFERENCE_COMMON_GUARDED_H

#include <cstddef>
#include <exception>
#include <utility>

#include "base/base_log_interface.h"
#include "base/thread_id.h"

namespace reference {

// Takes no memory, which may be what is lacking. what may come from outside.
inline void LogException(const char* tag, const char* doing, const char* what) noexcept {
  char shown[128] = "";
  for (std::size_t i = 0; i + 1 < sizeof shown && what[i] != '\0'; ++i) {
    shown[i] = what[i] < ' ' || what[i] > '~' ? '?' : what[i];
  }
  base::IBaseLogInterface::GetLogInstance()->WriteLog(60, base::GetTid(), "%s%s threw: %s", tag, doing, shown);
}

// Says whether step ended without an exception; one is logged as doing's, a literal.
template <class Step>
bool Guarded(const char* tag, const char* doing, Step&& step) noexcept {
  try {
    std::forward<Step>(step)();
    return true;
  } catch (const std::exception& exception) {
    LogException(tag, doing, exception.what());
  } catch (...) {
    LogException(tag, doing, "no standard exception");
  }
  return false;
}

}  // namespace reference

#endif
