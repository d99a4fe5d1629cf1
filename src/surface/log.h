// The log call. A macro, so that the format stands as a literal where the compiler checks it against its arguments.
//
// Threads: from any thread. The logger filters by level; every line is handed to it.
#ifndef SURFACE_LOG_H
#define SURFACE_LOG_H

#include "base/base_log_interface.h"
#include "base/thread_id.h"

namespace qv_data_interface {

inline constexpr int kLogTrace = 0;
inline constexpr int kLogInfo = 20;
inline constexpr int kLogError = 60;

}  // namespace qv_data_interface

// QV_LOG(level, format, arguments...): texts as NUL-terminated pointers, integers as int.
#define QV_LOG(level, ...)                                                                   \
  do {                                                                                       \
    const int logLevel = (level);                                                            \
    const long logThreadId = base::GetTid();                                                 \
    base::IBaseLogInterface::GetLogInstance()->WriteLog(logLevel, logThreadId, __VA_ARGS__); \
  } while (false)

#endif
