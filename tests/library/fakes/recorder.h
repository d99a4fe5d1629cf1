// One list of every call that the library makes to its surroundings, in order, whichever fake it reaches.
//
// Threads: all of it may be used from any thread. Ownership: one recorder for the process; it lives for ever, since the
// library calls out before main.
#ifndef TESTS_LIBRARY_FAKES_RECORDER_H
#define TESTS_LIBRARY_FAKES_RECORDER_H

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/line.h"
#include "tests/support/uncounted.h"

namespace fakes {

class Recorder {
 public:
  static Recorder& Get() {
    static auto* const recorder = new Recorder;
    return *recorder;
  }

  void Add(const std::string& call) {
    if (muted.load(std::memory_order_relaxed)) return;
    std::function<void()> action;
    {
      const std::lock_guard lock(mutex);
      calls.push_back(call);
      ++counts[call];
      const auto found = std::find_if(actions.begin(), actions.end(),
                                      [&call](const auto& entry) { return call.rfind(entry.first, 0) == 0; });
      if (found != actions.end()) {
        action = std::move(found->second);
        actions.erase(found);
      }
    }
    // Before the action, whose own calls come after this one.
    Visit(call.c_str());
    if (action) action();
  }
  // A call that is left out of the list, since it changes nothing.
  void Visit(const char* call) {
    if (onEachCall != nullptr) (*onEachCall)(call);
  }
  // Called with each call of the calling thread, recorded or not, with nothing locked; null for none.
  using OnEachCall = std::function<void(const char* call)>;
  static void Watch(const OnEachCall* watcher) { onEachCall = watcher; }
  // The calls since the last Take.
  std::vector<std::string> Take() {
    const std::lock_guard lock(mutex);
    return std::exchange(calls, {});
  }
  // Runs the action once, right after the next call that begins with this text was recorded and on the thread of that
  // call, with nothing locked.
  void At(const std::string& call, std::function<void()> action) {
    const std::lock_guard lock(mutex);
    actions.emplace_back(call, std::move(action));
  }
  // While muted nothing is recorded and no lock is taken, so that the recorder orders no threads.
  void Mute(bool value) { muted.store(value, std::memory_order_relaxed); }
  // Forgets calls and actions, between tests.
  void Reset() {
    Mute(false);
    const std::lock_guard lock(mutex);
    calls.clear();
    actions.clear();
  }

  // How often this very call was made since the process began.
  int CountEver(const std::string& call) {
    const std::lock_guard lock(mutex);
    return counts[call];
  }

 private:
  inline static thread_local const OnEachCall* onEachCall = nullptr;

  std::atomic<bool> muted = false;
  std::mutex mutex;
  std::vector<std::string> calls;
  std::vector<std::pair<std::string, std::function<void()>>> actions;
  std::map<std::string, int> counts;
};

template <class... Arguments>
void Record(const char* operation, const Arguments&... arguments) {
  const tests::Uncounted own;
  Recorder::Get().Add(tests::Line(operation, arguments...));
}

}  // namespace fakes

#endif
