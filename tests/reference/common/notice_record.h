// What a recording sink of any service is made of: every notice is a line of one ordered list.
//
// Threads: any, the list is guarded; set inside before the first notice. Ownership: none.
#ifndef TESTS_REFERENCE_COMMON_NOTICE_RECORD_H
#define TESTS_REFERENCE_COMMON_NOTICE_RECORD_H

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <iostream>
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

  // The values make a line, with blanks between them.
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

  std::vector<std::string> Lines() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return lines;
  }

  std::size_t Count(const std::string& beginning) const {
    const std::lock_guard<std::mutex> lock(mutex);
    return CountLocked(beginning);
  }

  // When not so many lines begin like this after kPatience, it prints the whole list and says false.
  [[nodiscard]] bool WaitFor(const std::string& beginning, std::size_t times = 1) const {
    std::unique_lock<std::mutex> lock(mutex);
    if (added.wait_for(lock, kPatience, [&] { return CountLocked(beginning) >= times; })) return true;
    std::cerr << '"' << beginning << "\" did not come " << times << " times; what came:\n";
    for (const std::string& line : lines) std::cerr << "  " << line << '\n';
    return false;
  }

 private:
  std::size_t CountLocked(const std::string& beginning) const {
    const auto fits = [&](const std::string& line) { return line.starts_with(beginning); };
    return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), fits));
  }

  mutable std::mutex mutex;
  mutable std::condition_variable added;
  std::vector<std::string> lines;
};

}  // namespace tests

#endif
