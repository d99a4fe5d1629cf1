// A value that several threads share: copied out, replaced or taken as a whole.
//
// Threads: every operation from any thread. A value that is replaced or taken is destroyed after the lock, for it may
// be the last pointer to something that calls back. What Update replaces is destroyed under it, and must not call back.
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
    return TakeIf([] { return true; });
  }

  // The same, if isAllowed() holds under the lock; otherwise returns an empty value and leaves everything as it is.
  // REQUIRES, here and below: what is passed in calls nothing outside the library.
  template <class Condition>
  Value TakeIf(Condition&& isAllowed) {
    Value taken{};
    const MutexLock lock(mutex);
    if (isAllowed()) std::swap(value, taken);
    return taken;
  }

  // Puts newValue in if the value is empty and isAllowed() holds, both under the lock; says whether it is in.
  template <class Condition>
  bool PutIfEmpty(const Value& newValue, Condition&& isAllowed) {
    const MutexLock lock(mutex);
    if (value || !isAllowed()) return false;
    value = newValue;
    return true;
  }

  // Changes the value in place and returns a copy of the outcome.
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
