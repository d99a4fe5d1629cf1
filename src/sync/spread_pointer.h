// A shared pointer that threads copy out all the time, side by side.
//
// Threads that copy one std::shared_ptr write the same lock and the same reference count, which makes each several
// times as slow as one alone. So this holder keeps several copies, each with a lock and a count of its own on cache
// lines of its own. A thread begins with the copy that its stack's address falls on (a thread_local is costly in a DLL)
// and goes on to the next one when another thread is at it.
//
// Threads: every operation from any thread. Copy allocates nothing and waits for no change, and no change waits for
// what is done with a copy. While a change is under way a copy is the value before it or after it, and a later copy may
// be the older one: IsEmpty is exact. A value that is replaced or taken is destroyed after the locks, for it may be the
// last pointer to something that calls back.
// Ownership: every copy shares in the object.
#ifndef SYNC_SPREAD_POINTER_H
#define SYNC_SPREAD_POINTER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "sync/brief_lock.h"
#include "sync/mutex.h"

namespace qv_data_interface {

template <class Object>
class SpreadPointer {
 public:
  using Pointer = std::shared_ptr<Object>;

  Pointer Copy() const {
    for (std::size_t number = StackNumber(), tried = 0;; ++number, ++tried) {
      Slot& slot = slots[number % kSlots];
      if (slot.lock.TryLock()) {
        Pointer copy = slot.pointer;
        slot.lock.Unlock();
        return copy;
      }
      if (tried % kSlots == kSlots - 1) GiveWay(tried / kSlots);
    }
  }

  // Waits for a change that is under way.
  bool IsEmpty() const {
    const MutexLock lock(changeMutex);
    return value == nullptr;
  }

  void Replace(Pointer newValue) {
    Copies copies = Spread(newValue);
    const MutexLock lock(changeMutex);
    value.swap(newValue);
    SwapIn(copies);
  }

  // Leaves the holder empty, without needing memory. Of several threads only one gets what was there.
  Pointer Take() {
    return TakeIf([] { return true; });
  }

  // The same, if isAllowed() holds while no other change is under way; otherwise returns an empty pointer and leaves
  // everything as it is.
  // REQUIRES, here and below: what is passed in calls nothing outside the library.
  template <class Condition>
  Pointer TakeIf(Condition&& isAllowed) {
    Pointer taken;
    Copies copies;
    const MutexLock lock(changeMutex);
    if (!isAllowed()) return taken;
    value.swap(taken);
    SwapIn(copies);
    return taken;
  }

  // Puts newValue in if the holder is empty and isAllowed() holds, both while no other change is under way; says
  // whether it is in.
  template <class Condition>
  bool PutIfEmpty(const Pointer& newValue, Condition&& isAllowed) {
    Copies copies = Spread(newValue);
    const MutexLock lock(changeMutex);
    if (value || !isAllowed()) return false;
    value = newValue;
    SwapIn(copies);
    return true;
  }

 private:
  static constexpr int kSlotBits = 4;
  static constexpr std::size_t kSlots = std::size_t{1} << kSlotBits;
  static constexpr std::size_t kCacheLine = 64;

  struct alignas(kCacheLine) Slot {
    BriefLock lock;
    Pointer pointer QV_GUARDED_BY(lock);
  };
  // What a copy counts. As long as a cache line, so that no two counts share one.
  struct Share {
    Pointer original;
    std::byte distance[kCacheLine];
  };
  using Copies = std::array<Pointer, kSlots>;

  // Much the same number throughout a thread, and seldom that of another: the upper bits of a multiplication by the
  // golden ratio's fraction spread addresses that lie at equal distances. A wrong guess costs time only.
  static std::size_t StackNumber() {
    const char here{};
    const auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(&here));
    return static_cast<std::size_t>((address >> 16) * 0x9E3779B97F4A7C15U >> (64 - kSlotBits));
  }

  static Copies Spread(const Pointer& original) {
    Copies copies;
    if (!original) return copies;
    for (Pointer& copy : copies) copy = Pointer(std::make_shared<Share>(Share{original, {}}), original.get());
    return copies;
  }

  // Leaves the copies that were there before in copies.
  void SwapIn(Copies& copies) QV_REQUIRES(changeMutex) {
    for (std::size_t i = 0; i < kSlots; ++i) {
      slots[i].lock.Lock();
      slots[i].pointer.swap(copies[i]);
      slots[i].lock.Unlock();
    }
  }

  mutable std::array<Slot, kSlots> slots;
  // Held for the length of a change; Copy does without it.
  mutable Mutex changeMutex;
  Pointer value QV_GUARDED_BY(changeMutex);
};

}  // namespace qv_data_interface

#endif
