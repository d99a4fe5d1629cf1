// A value that several threads share: copied out, replaced or taken as a whole.
//
// Threads: every operation from any thread. No code of the value's owner runs under the lock: an old value is destroyed
// after it, for it may be the last pointer to something that calls back.
#ifndef SYNC_GUARDED_H
#define SYNC_GUARDED_H

#include <utility>

#include "sync/mutex.h"

namespace qv_data_interface {

template <class Value>
class Guarded {
 public:
  Value Copy() const {
    const MutexLock lock(mutex);
    return value;
  }

  void Replace(Value newValue) {
    const MutexLock lock(mutex);
    std::swap(value, newValue);
  }

  // Leaves an empty value behind. Of several threads only one gets what was there.
  Value Take() {
    Value taken{};
    const MutexLock lock(mutex);
    std::swap(value, taken);
    return taken;
  }

  // Says whether the value was empty, and so is newValue now. For pointers.
  bool PutIfEmpty(const Value& newValue) {
    const MutexLock lock(mutex);
    if (value) return false;
    value = newValue;
    return true;
  }

  // Says whether expected was there, and so is taken out by this thread. For pointers.
  bool TakeIf(const Value& expected) {
    Value taken{};
    const MutexLock lock(mutex);
    if (value != expected) return false;
    std::swap(value, taken);
    return true;
  }

  // Changes the value in place and returns a copy of the outcome. REQUIRES: change calls nothing outside the library.
  template <class Change>
  Value Update(Change&& change) {
    const MutexLock lock(mutex);
    change(value);
    return value;
  }

 private:
  mutable Mutex mutex;
  Value value QV_GUARDED_BY(mutex){};
};

}  // namespace qv_data_interface

#endif
