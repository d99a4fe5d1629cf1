// The lock that is held while a connection is rebuilt, across calls into the services and the front end.
//
// A plain mutex will not do: such a call may come back on the same thread, or may wait for another thread's notice that
// wants the lock in turn. So a thread that already holds it is refused, and one that must not wait can say so.
#ifndef SYNC_REBUILD_LOCK_H
#define SYNC_REBUILD_LOCK_H

#include <condition_variable>
#include <mutex>
#include <thread>

#include "sync/thread_safety.h"

namespace qv_data_interface {

class QV_CAPABILITY("mutex") RebuildLock {
 public:
  // False when this thread holds the lock already, or when another one does and mayWait is false.
  bool Acquire(bool mayWait) QV_TRY_ACQUIRE(true);
  void Release() QV_RELEASE();

 private:
  std::mutex mutex;
  std::condition_variable released;
  // Of the holding thread; no thread's id while the lock is free.
  std::thread::id holder;
};

// Releases a lock that has been acquired.
class QV_SCOPED_CAPABILITY RebuildLockReleaser {
 public:
  explicit RebuildLockReleaser(RebuildLock& lock) QV_REQUIRES(lock) : lock(lock) {}
  ~RebuildLockReleaser() QV_RELEASE() { lock.Release(); }
  RebuildLockReleaser(const RebuildLockReleaser&) = delete;
  RebuildLockReleaser& operator=(const RebuildLockReleaser&) = delete;

 private:
  RebuildLock& lock;
};

}  // namespace qv_data_interface

#endif
