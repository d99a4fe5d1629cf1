/// @file
#ifndef SDK_BASE_THREAD_ID_H
#define SDK_BASE_THREAD_ID_H

#include "base/export.h"

namespace base {

/// The operating system's id of the calling thread, as debuggers show it.
SDK_BASE_API long GetTid();

}  // namespace base

#endif
