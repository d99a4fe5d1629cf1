// One line on its way to the log file. A plain value: no threads, no ownership beyond its text.
#ifndef REFERENCE_BASE_LOG_LINE_H
#define REFERENCE_BASE_LOG_LINE_H

#include <chrono>
#include <string>

namespace base {

constexpr int kTraceLevel = 0;
constexpr int kInformationLevel = 20;
constexpr int kFailureLevel = 60;

struct LogLine {
  std::chrono::system_clock::time_point time;
  int level = kTraceLevel;
  long threadId = 0;
  std::string text;
};

}  // namespace base

#endif
