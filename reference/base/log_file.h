// The rotating log files: name.log, and behind it name.1.log, name.2.log and so on, the newest first.
//
// Threads: none of its own; guarded by its owner. Ownership: holds the open file.
#ifndef REFERENCE_BASE_LOG_FILE_H
#define REFERENCE_BASE_LOG_FILE_H

#include <memory>
#include <string>
#include <vector>

#include "reference/base/log_line.h"

namespace spdlog::sinks {
class sink;
}

namespace base {

struct LogSettings {
  std::string directory = "./log";
  std::string name = "sdk";
  int sizeKib = 1024;
  int mode = 0;
  int count = 5;
};

class LogFile {
 public:
  LogFile();
  ~LogFile();

  // Makes the directory when it is missing. A setting outside its range is replaced by its default; the returned texts
  // say so. Throws when the file cannot be opened; the log is closed then.
  std::vector<std::string> Open(const LogSettings& wanted);
  void Close();
  bool IsOpen() const { return sink != nullptr; }
  // The line is in the operating system's hands when this returns, so a crash of the process loses none. Throws when it
  // could not be written.
  // REQUIRES: IsOpen().
  void Write(const LogLine& line);

 private:
  std::unique_ptr<spdlog::sinks::sink> sink;
};

}  // namespace base

#endif
