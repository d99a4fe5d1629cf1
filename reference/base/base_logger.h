// The reference logger: takes the settings, filters by level, and brings every line to the rotating files.
//
// Threads: every operation from any thread; one lock orders settings, files and lines, so lines stay whole and in
// order. Ownership: holds its files until it is destroyed; the process-wide one never is.
#ifndef REFERENCE_BASE_BASE_LOGGER_H
#define REFERENCE_BASE_BASE_LOGGER_H

#include <atomic>
#include <chrono>
#include <mutex>

#include "base/base_log_interface.h"
#include "reference/base/log_file.h"
#include "reference/base/waiting_lines.h"

namespace base {

// No operation throws. When the files cannot be written, standard error says so once a start, lines wait (bounded), and
// a line that comes some seconds later tries again.
class BaseLogger final : public IBaseLogInterface {
 public:
  // The next StartLog uses these. A null text is ignored.
  void SetLogPath(const char* directory) override;
  void SetLogName(const char* name) override;
  // KiB a file, 1 to 1048576. A line longer than that still stands whole, in a file of its own.
  void SetLogSizeSetting(const int& sizeSetting) override;
  // 0: StartLog goes on in the newest file. 1: StartLog begins a new file, and the one before it becomes name.1.log.
  void SetLogModeSetting(const int& modeSetting) override;
  // Files kept, 1 to 1000, the one being written included.
  void SetLogCountSetting(const int& countSetting) override;

  // Takes effect at once, for the lines that wait for StartLog too.
  void SetLogLevel(const int& threshold) override;
  void WriteLog(const int& level, const long& threadId, const char* format, ...) override SDK_PRINTF_FORMAT(4, 5);
  void StartLog() override;

  void Reserved5() override {}
  void Reserved8() override {}
  void Reserved9() override {}
  void Reserved11() override {}
  void Reserved12() override {}
  void Reserved13() override {}
  void Reserved14() override {}

 private:
  template <class Change>
  void Set(Change change) noexcept;
  void OpenLocked();
  void WriteOrKeepLocked(LogLine line);
  void WriteOwnLocked(int level, std::string text);
  void FailLocked(const char* reason);

  std::atomic<int> threshold{kTraceLevel};

  std::mutex fileMutex;
  LogSettings settings;
  LogFile file;
  WaitingLines waiting;
  bool started = false;
  bool failureTold = false;
  std::chrono::steady_clock::time_point nextAttempt;
};

}  // namespace base

#endif
