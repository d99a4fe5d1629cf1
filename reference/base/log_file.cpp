#include "reference/base/log_file.h"

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <filesystem>
#include <system_error>

namespace base {
namespace {

constexpr int kMaxSizeKib = 1024 * 1024;
constexpr int kMaxMode = 1;
constexpr int kMaxCount = 1000;

void CheckRange(const char* setting, int least, int most, int standard, int& value,
                std::vector<std::string>& complaints) {
  if (value >= least && value <= most) return;
  complaints.push_back(std::string("the log's ") + setting + " setting is " + std::to_string(value) + ", allowed is " +
                       std::to_string(least) + " to " + std::to_string(most) + "; " + std::to_string(standard) +
                       " is used");
  value = standard;
}

std::vector<std::string> Correct(LogSettings& settings) {
  const LogSettings standard;
  std::vector<std::string> complaints;
  CheckRange("size", 1, kMaxSizeKib, standard.sizeKib, settings.sizeKib, complaints);
  CheckRange("mode", 0, kMaxMode, standard.mode, settings.mode, complaints);
  CheckRange("count", 1, kMaxCount, standard.count, settings.count, complaints);
  // A name is no way out of the directory.
  const std::string name = std::filesystem::path(settings.name).filename().string();
  if (name.empty() || name != settings.name) {
    complaints.push_back("the log's name is \"" + settings.name + "\", allowed is a file name; \"" + standard.name +
                         "\" is used");
    settings.name = standard.name;
  }
  return complaints;
}

// An earlier run may have kept more files than this one is to keep.
void RemoveSurplusFiles(const std::filesystem::path& directory, const LogSettings& settings) {
  std::error_code ignored;
  for (int number = settings.count;; ++number) {
    const auto file = directory / (settings.name + "." + std::to_string(number) + ".log");
    if (!std::filesystem::remove(file, ignored)) return;
  }
}

spdlog::level::level_enum SpdlogLevel(int level) {
  if (level < kInformationLevel) return spdlog::level::trace;
  return level < kFailureLevel ? spdlog::level::info : spdlog::level::err;
}

}  // namespace

LogFile::LogFile() = default;
LogFile::~LogFile() = default;

std::vector<std::string> LogFile::Open(const LogSettings& wanted) {
  // First, since Windows renames no open file.
  Close();
  LogSettings settings = wanted;
  std::vector<std::string> complaints = Correct(settings);
  const std::filesystem::path directory(settings.directory);
  std::filesystem::create_directories(directory);
  RemoveSurplusFiles(directory, settings);
  auto opened = std::make_unique<spdlog::sinks::rotating_file_sink_st>(
      (directory / (settings.name + ".log")).native(), static_cast<std::size_t>(settings.sizeKib) * 1024,
      static_cast<std::size_t>(settings.count) - 1, settings.mode == 1);
  opened->set_pattern("%Y-%m-%d %H:%M:%S.%e%z [%t] [%l] %v");
  sink = std::move(opened);
  return complaints;
}

void LogFile::Close() {
  sink.reset();
}

void LogFile::Write(const LogLine& line) {
  spdlog::details::log_msg message(line.time, spdlog::source_loc{}, spdlog::string_view_t{}, SpdlogLevel(line.level),
                                   line.text);
  // The operating system's ids are unsigned, whatever the type they travel in.
  message.thread_id = static_cast<unsigned long>(line.threadId);
  sink->log(message);
  sink->flush();
}

}  // namespace base
