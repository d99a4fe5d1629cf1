// How a test waits for another thread, and a sink that dies as the library's controller does: with a last act.
//
// Threads: a moment from any; a sink dies on the thread that drops it last. Ownership: a sink owns what its act holds.
#ifndef TESTS_REFERENCE_COMMON_MOMENT_H
#define TESTS_REFERENCE_COMMON_MOMENT_H

#include <chrono>
#include <condition_variable>
#include <functional>
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

template <class Sink>
struct DyingSink : Sink {
  ~DyingSink() override {
    if (lastAct) lastAct();
  }
  std::function<void()> lastAct;
};

}  // namespace tests

#endif
