// What a recording sink of any service is made of: every notice is a line of one ordered list.
//
// Threads: any, the list is guarded; set inside before the first notice. Ownership: none.
#ifndef TESTS_REFERENCE_COMMON_NOTICE_RECORD_H
#define TESTS_REFERENCE_COMMON_NOTICE_RECORD_H

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/reference/common/moment.h"

namespace tests {

class NoticeRecord {
 public:
  // Called inside each notice with its line.
  std::function<void(const std::string&)> inside;

  std::vector<std::string> Lines() {
    const std::lock_guard<std::mutex> lock(mutex);
    return lines;
  }

  // False when not so many lines begin like this after kPatience.
  [[nodiscard]] bool WaitFor(const std::string& beginning, std::ptrdiff_t times = 1) {
    std::unique_lock<std::mutex> lock(mutex);
    const auto fits = [&](const std::string& line) { return line.starts_with(beginning); };
    return added.wait_for(lock, kPatience, [&] { return std::count_if(lines.begin(), lines.end(), fits) >= times; });
  }

 protected:
  template <class... Values>
  void Add(const Values&... values) {
    std::ostringstream stream;
    const char* separator = "";
    ((stream << separator << values, separator = " "), ...);
    {
      const std::lock_guard<std::mutex> lock(mutex);
      lines.push_back(stream.str());
      added.notify_all();
    }
    if (inside) inside(stream.str());
  }

 private:
  std::mutex mutex;
  std::condition_variable added;
  std::vector<std::string> lines;
};

}  // namespace tests

#endif
