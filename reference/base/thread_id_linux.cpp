#include <unistd.h>

#include "base/thread_id.h"

long base::GetTid() {
  return ::gettid();
}
