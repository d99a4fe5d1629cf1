#include <windows.h>

#include "base/thread_id.h"

long base::GetTid() {
  return static_cast<long>(::GetCurrentThreadId());
}
