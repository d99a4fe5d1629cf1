// Threads that tests wait for. Every wait is bounded: one in vain ends the process with a message.
#ifndef TESTS_LIBRARY_FAKES_THREADS_H
#define TESTS_LIBRARY_FAKES_THREADS_H

#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <iostream>
#include <string>
#include <utility>

namespace fakes {

// Runs work on a thread of its own; Finish waits for its end.
class Worker {
 public:
  explicit Worker(std::function<void()> work, std::string name = "a thread")
      : name(std::move(name)), end(std::async(std::launch::async, std::move(work))) {}
  ~Worker() { Finish(); }
  bool EndsWithin(std::chrono::milliseconds time) const { return end.wait_for(time) == std::future_status::ready; }
  void Finish() {
    if (!end.valid()) return;
    if (!EndsWithin(std::chrono::seconds(20))) {
      std::cerr << "waited in vain for the end of " << name << std::endl;
      std::abort();
    }
    end.get();
  }

 private:
  const std::string name;
  std::future<void> end;
};

}  // namespace fakes

#endif
