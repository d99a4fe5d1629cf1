// A lock for sections of a few instructions, where a mutex would cost more than what it guards.
//
// Threads: every operation from any thread. A thread that finds it held gives way to others until it is free, so a
// section must call nothing that may block.
#ifndef SYNC_BRIEF_LOCK_H
#define SYNC_BRIEF_LOCK_H

#include <atomic>
#include <thread>

#include "sync/thread_safety.h"

namespace qv_data_interface {

class QV_CAPABILITY("mutex") BriefLock {
 public:
  bool TryLock() QV_TRY_ACQUIRE(true) { return !held.exchange(true, std::memory_order_acquire); }
  void Lock() QV_ACQUIRE() {
    while (!TryLock()) std::this_thread::yield();
  }
  void Unlock() QV_RELEASE() { held.store(false, std::memory_order_release); }

 private:
  std::atomic<bool> held{false};
};

}  // namespace qv_data_interface

#endif
