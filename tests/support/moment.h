// How a test waits for another thread.
//
// Threads: any. Ownership: none.
#ifndef TESTS_SUPPORT_MOMENT_H
#define TESTS_SUPPORT_MOMENT_H

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace tests {

inline constexpr std::chrono::seconds kPatience{10};

// A moment that one thread waits for and another one makes come.
class Moment {
 public:
  void Come() {
    const std::lock_guard<std::mutex> lock(mutex);
    hasCome = true;
    changed.notify_all();
  }
  [[nodiscard]] bool Await() {
    std::unique_lock<std::mutex> lock(mutex);
    return changed.wait_for(lock, kPatience, [this] { return hasCome; });
  }

 private:
  std::mutex mutex;
  std::condition_variable changed;
  bool hasCome = false;
};

}  // namespace tests

#endif
