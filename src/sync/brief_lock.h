// A lock for sections of a few instructions, where a mutex would cost more than what it guards.
//
// Threads: every operation from any thread. A thread that finds it held gives way to others until it is free, so a
// section must call nothing that may block.
#ifndef SYNC_BRIEF_LOCK_H
#define SYNC_BRIEF_LOCK_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <thread>

#include "sync/thread_safety.h"

namespace qv_data_interface {

// Between two tries. Nothing tells when the lock is free: what could, costs more than the section that it guards.
// Sleeping after a while lets a holder of lower priority run, which yielding never does.
inline void GiveWay(std::size_t tries) {
  constexpr std::size_t kPatientTries = 100;
  if (tries < kPatientTries) {
    std::this_thread::yield();
  } else {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

class QV_CAPABILITY("mutex") BriefLock {
 public:
  bool TryLock() QV_TRY_ACQUIRE(true) { return !held.exchange(true, std::memory_order_acquire); }
  void Lock() QV_ACQUIRE() {
    for (std::size_t tries = 0; !TryLock(); ++tries) GiveWay(tries);
  }
  void Unlock() QV_RELEASE() { held.store(false, std::memory_order_release); }

 private:
  std::atomic<bool> held{false};
};

}  // namespace qv_data_interface

#endif
