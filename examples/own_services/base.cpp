// A logger that writes to the error output, and a crash handler that is none.
#include <cstdarg>
#include <cstdio>
#include <functional>
#include <thread>

#include "base/base_log_interface.h"
#include "base/mini_jump.h"
#include "base/thread_id.h"
#include "worker.h"

bool& InsideNotice() {
  static thread_local bool inside = false;
  return inside;
}

namespace base {
namespace {

class Logger final : public IBaseLogInterface {
 public:
  void SetLogPath(const char*) override {}
  void SetLogName(const char*) override {}
  void SetLogSizeSetting(const int&) override {}
  void SetLogLevel(const int&) override {}
  void Reserved5() override {}
  void SetLogModeSetting(const int&) override {}
  void SetLogCountSetting(const int&) override {}
  void Reserved8() override {}
  void Reserved9() override {}
  void WriteLog(const int& level, const long& threadId, const char* format, ...) override {
    // One call of stdio a line, so that the lines of several threads stay whole.
    char text[1024];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    std::fprintf(stderr, "%d %ld %s\n", level, threadId, text);
  }
  void Reserved11() override {}
  void Reserved12() override {}
  void Reserved13() override {}
  void Reserved14() override {}
  void StartLog() override {}
};

}  // namespace

std::shared_ptr<IBaseLogInterface> IBaseLogInterface::GetLogInstance() {
  // Never destroyed: threads may still log while the process ends.
  static const auto* const instance = new std::shared_ptr<IBaseLogInterface>(std::make_shared<Logger>());
  return *instance;
}

long GetTid() {
  return static_cast<long>(std::hash<std::thread::id>()(std::this_thread::get_id()) & 0x7fffffff);
}

void IMiniJump::GenerateMiniDump(const char*, std::function<void(const char*)>) {}

}  // namespace base
