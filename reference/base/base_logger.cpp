#include "reference/base/base_logger.h"

#include <cstdarg>
#include <cstdio>
#include <exception>

#include "base/thread_id.h"
#include "reference/base/log_text.h"

namespace base {
namespace {

constexpr std::chrono::seconds kPauseAfterFailure{5};

}  // namespace

template <class Change>
void BaseLogger::Set(Change change) noexcept {
  try {
    const std::lock_guard<std::mutex> lock(fileMutex);
    change(settings);
  } catch (const std::exception&) {
    // Out of memory: the earlier setting stays.
  }
}

void BaseLogger::SetLogPath(const char* directory) {
  if (directory != nullptr) Set([=](LogSettings& wanted) { wanted.directory = directory; });
}

void BaseLogger::SetLogName(const char* name) {
  if (name != nullptr) Set([=](LogSettings& wanted) { wanted.name = name; });
}

void BaseLogger::SetLogSizeSetting(const int& sizeSetting) {
  Set([=](LogSettings& wanted) { wanted.sizeKib = sizeSetting; });
}

void BaseLogger::SetLogModeSetting(const int& modeSetting) {
  Set([=](LogSettings& wanted) { wanted.mode = modeSetting; });
}

void BaseLogger::SetLogCountSetting(const int& countSetting) {
  Set([=](LogSettings& wanted) { wanted.count = countSetting; });
}

void BaseLogger::SetLogLevel(const int& newThreshold) {
  threshold = newThreshold;
}

void BaseLogger::WriteLog(const int& level, const long& threadId, const char* format, ...) {
  if (format == nullptr || level < threshold) return;
  std::va_list arguments;
  va_start(arguments, format);
  try {
    LogLine line{std::chrono::system_clock::now(), level, threadId, FormatLogText(format, arguments)};
    const std::lock_guard<std::mutex> lock(fileMutex);
    if (started && !file.IsOpen() && std::chrono::steady_clock::now() >= nextAttempt) OpenLocked();
    WriteOrKeepLocked(std::move(line));
  } catch (const std::exception&) {
    // Out of memory: the line is lost, the caller must not be.
  }
  va_end(arguments);
}

void BaseLogger::StartLog() {
  try {
    const std::lock_guard<std::mutex> lock(fileMutex);
    started = true;
    failureTold = false;
    OpenLocked();
  } catch (const std::exception&) {
    // Out of memory: the next line tries again.
  }
}

void BaseLogger::OpenLocked() {
  std::vector<std::string> complaints;
  try {
    complaints = file.Open(settings);
  } catch (const std::exception& failure) {
    FailLocked(failure.what());
    return;
  }
  auto [lines, dropped] = waiting.Take();
  for (LogLine& line : lines) {
    if (line.level >= threshold) WriteOrKeepLocked(std::move(line));
  }
  if (dropped > 0)
    WriteOwnLocked(kFailureLevel, std::to_string(dropped) + " lines were dropped here, no file was open");
  for (std::string& complaint : complaints) WriteOwnLocked(kFailureLevel, std::move(complaint));
}

void BaseLogger::WriteOrKeepLocked(LogLine line) {
  if (file.IsOpen()) {
    try {
      file.Write(line);
      return;
    } catch (const std::exception& failure) {
      FailLocked(failure.what());
    }
  }
  waiting.Add(std::move(line));
}

void BaseLogger::WriteOwnLocked(int level, std::string text) {
  WriteOrKeepLocked({std::chrono::system_clock::now(), level, GetTid(), "[REFERENCE_BASE]" + std::move(text)});
}

void BaseLogger::FailLocked(const char* reason) {
  file.Close();
  nextAttempt = std::chrono::steady_clock::now() + kPauseAfterFailure;
  if (failureTold) return;
  failureTold = true;
  std::fprintf(stderr, "[REFERENCE_BASE]cannot write the log \"%s\" in \"%s\": %s\n", settings.name.c_str(),
               settings.directory.c_str(), reason);
}

}  // namespace base
