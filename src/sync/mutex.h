// std::mutex and its lock guard with the names that the thread-safety analysis needs.
#ifndef SYNC_MUTEX_H
#define SYNC_MUTEX_H

#include <mutex>

#include "sync/thread_safety.h"

namespace qv_data_interface {

class QV_CAPABILITY("mutex") Mutex {
 public:
  void Lock() QV_ACQUIRE() { mutex.lock(); }
  void Unlock() QV_RELEASE() { mutex.unlock(); }

 private:
  std::mutex mutex;
};

class QV_SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) QV_ACQUIRE(mutex) : mutex(mutex) { mutex.Lock(); }
  ~MutexLock() QV_RELEASE() { mutex.Unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex;
};

}  // namespace qv_data_interface

#endif
