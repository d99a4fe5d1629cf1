// Threads that tests wait for. Every wait is bounded: one in vain ends the process with a message.
#ifndef TESTS_LIBRARY_FAKES_THREADS_H
#define TESTS_LIBRARY_FAKES_THREADS_H

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace fakes {

// Runs work on a thread of its own; Finish waits for its end.
class Worker {
 public:
  explicit Worker(std::function<void()> work, std::string name = "a thread")
      : name(std::move(name)), thread([this, work = std::move(work)] {
          work();
          const std::lock_guard lock(mutex);
          isDone = true;
          changed.notify_all();
        }) {}
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  ~Worker() { Finish(); }
  bool EndsWithin(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, time, [this] { return isDone; });
  }
  void Finish() {
    if (!thread.joinable()) return;
    if (!EndsWithin(std::chrono::seconds(20))) {
      std::cerr << "waited in vain for the end of " << name << std::endl;
      std::abort();
    }
    thread.join();
  }

 private:
  const std::string name;
  std::mutex mutex;
  std::condition_variable changed;
  bool isDone = false;
  std::thread thread;
};

}  // namespace fakes

#endif
