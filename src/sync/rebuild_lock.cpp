#include "sync/rebuild_lock.h"

namespace qv_data_interface {

bool RebuildLock::Acquire(bool mayWait) QV_NO_THREAD_SAFETY_ANALYSIS {
  const std::thread::id self = std::this_thread::get_id();
  const std::thread::id none;
  std::unique_lock<std::mutex> lock(mutex);
  if (holder == self) return false;
  if (holder != none && !mayWait) return false;
  released.wait(lock, [&] { return holder == none; });
  holder = self;
  return true;
}

void RebuildLock::Release() QV_NO_THREAD_SAFETY_ANALYSIS {
  const std::lock_guard<std::mutex> lock(mutex);
  holder = std::thread::id();
  released.notify_one();
}

}  // namespace qv_data_interface
