// What a recording sink of any service is made of: every notice is a line of one ordered list.
//
// Threads: any, the list is guarded; set inside before the first notice. Ownership: none.
#ifndef TESTS_SUPPORT_NOTICE_RECORD_H
#define TESTS_SUPPORT_NOTICE_RECORD_H

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <iostream>
#include <mutex>
#include <string>
#include <vector>

#include "tests/support/moment.h"

namespace tests {

class NoticeRecord {
 public:
  // Called inside each notice with its line.
  std::function<void(const std::string&)> inside;

  void Add(const std::string& line) {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      lines.push_back(line);
      added.notify_all();
    }
    if (inside) inside(line);
  }

  std::vector<std::string> Lines() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return lines;
  }

  std::size_t Count(const std::string& beginning) const { return CountIn(Lines(), beginning); }

  // Forgets what came.
  void Clear() {
    const std::lock_guard<std::mutex> lock(mutex);
    lines.clear();
  }

  // Says whether the condition comes to hold of the lines in that time.
  template <class Condition>
  [[nodiscard]] bool WaitUntil(Condition&& holds, std::chrono::milliseconds time = kPatience) const {
    std::unique_lock<std::mutex> lock(mutex);
    return added.wait_for(lock, time, [&] { return holds(lines); });
  }

  // When not so many lines begin like this after kPatience, it prints the whole list and says false.
  [[nodiscard]] bool WaitFor(const std::string& beginning, std::size_t times = 1) const {
    if (WaitUntil([&](const auto& all) { return CountIn(all, beginning) >= times; })) return true;
    std::cerr << '"' << beginning << "\" did not come " << times << " times; what came:\n";
    for (const std::string& line : Lines()) std::cerr << "  " << line << '\n';
    return false;
  }

 private:
  static std::size_t CountIn(const std::vector<std::string>& lines, const std::string& beginning) {
    const auto fits = [&](const std::string& line) { return line.starts_with(beginning); };
    return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), fits));
  }

  mutable std::mutex mutex;
  mutable std::condition_variable added;
  std::vector<std::string> lines;
};

}  // namespace tests

#endif
