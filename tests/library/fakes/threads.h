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

class Event {
 public:
  void Set() {
    const std::lock_guard lock(mutex);
    isSet = true;
    changed.notify_all();
  }
  bool IsSetWithin(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, time, [this] { return isSet; });
  }
  void Wait(const std::string& what) {
    if (IsSetWithin(std::chrono::seconds(20))) return;
    std::cerr << "waited in vain for " << what << std::endl;
    std::abort();
  }

 private:
  std::mutex mutex;
  std::condition_variable changed;
  bool isSet = false;
};

// Runs work on a thread of its own; Finish waits for its end.
class Worker {
 public:
  explicit Worker(std::function<void()> work, std::string name = "a thread")
      : name(std::move(name)), thread([this, work = std::move(work)] {
          work();
          done.Set();
        }) {}
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  ~Worker() { Finish(); }
  bool EndsWithin(std::chrono::milliseconds time) { return done.IsSetWithin(time); }
  void Finish() {
    if (!thread.joinable()) return;
    done.Wait("the end of " + name);
    thread.join();
  }

 private:
  const std::string name;
  Event done;
  std::thread thread;
};

}  // namespace fakes

#endif
