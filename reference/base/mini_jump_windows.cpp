// The crash handler on Windows: a minidump, the callback, then the system's own handling of the unhandled exception.
#include <windows.h>
// After windows.h, which it needs.
#include <dbghelp.h>

#include <atomic>
#include <csignal>
#include <cwchar>
#include <exception>
#include <filesystem>
#include <iterator>
#include <list>
#include <mutex>
#include <string>

#include "base/base_log_interface.h"
#include "base/mini_jump.h"
#include "base/thread_id.h"
#include "reference/base/log_line.h"

namespace base {
namespace {

constexpr std::size_t kMaxPath = 1024;

struct DumpTarget {
  std::wstring directory;
  std::function<void(const char*)> onDump;
};

// A crashing thread reads this while another replaces it, so a target that was published once is never freed.
std::atomic<const DumpTarget*> currentTarget{nullptr};
std::atomic<bool> crashed{false};
wchar_t dumpPath[kMaxPath];
char dumpPathUtf8[kMaxPath * 4];

unsigned long long SecondsSince1970() {
  FILETIME now;
  ::GetSystemTimeAsFileTime(&now);
  const unsigned long long ticks = (static_cast<unsigned long long>(now.dwHighDateTime) << 32) | now.dwLowDateTime;
  return ticks / 10000000ULL - 11644473600ULL;
}

bool WriteDump(const DumpTarget& target, EXCEPTION_POINTERS* exception) {
  const int length = std::swprintf(dumpPath, kMaxPath, L"%ls\\crash-%lu-%llu.dmp", target.directory.c_str(),
                                   ::GetCurrentProcessId(), SecondsSince1970());
  if (length < 0) return false;
  const HANDLE file = ::CreateFileW(dumpPath, GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  MINIDUMP_EXCEPTION_INFORMATION information{};
  information.ThreadId = ::GetCurrentThreadId();
  information.ExceptionPointers = exception;
  // Of the stacks only what a backtrace needs: they may hold credentials and sessions.
  const BOOL written = ::MiniDumpWriteDump(::GetCurrentProcess(), ::GetCurrentProcessId(), file, MiniDumpFilterMemory,
                                           &information, nullptr, nullptr);
  ::CloseHandle(file);
  return written != FALSE && ::WideCharToMultiByte(CP_UTF8, 0, dumpPath, -1, dumpPathUtf8,
                                                   static_cast<int>(std::size(dumpPathUtf8)), nullptr, nullptr) > 0;
}

LONG WINAPI OnUnhandledException(EXCEPTION_POINTERS* exception) {
  if (!crashed.exchange(true)) {
    const DumpTarget* const target = currentTarget;
    if (WriteDump(*target, exception) && target->onDump) target->onDump(dumpPathUtf8);
  }
  return EXCEPTION_CONTINUE_SEARCH;
}

// abort() raises no exception by itself.
void OnAbort(int) {
  ::RaiseException(static_cast<DWORD>(STATUS_FATAL_APP_EXIT), EXCEPTION_NONCONTINUABLE, 0, nullptr);
}

void Install(const char* dumpDirectory, std::function<void(const char*)> onDump) {
  static std::mutex installMutex;
  static auto* const targets = new std::list<DumpTarget>;
  // Absolute, because the working directory may be another one by then.
  const std::filesystem::path directory = std::filesystem::absolute(dumpDirectory);
  const std::lock_guard<std::mutex> lock(installMutex);
  targets->push_back({directory.wstring(), std::move(onDump)});
  currentTarget = &targets->back();
  ::SetUnhandledExceptionFilter(OnUnhandledException);
  std::signal(SIGABRT, OnAbort);
  std::filesystem::create_directories(directory);
}

}  // namespace

void IMiniJump::GenerateMiniDump(const char* dumpDirectory, std::function<void(const char*)> onDump) {
  try {
    Install(dumpDirectory != nullptr ? dumpDirectory : ".", std::move(onDump));
  } catch (const std::exception& failure) {
    IBaseLogInterface::GetLogInstance()->WriteLog(kFailureLevel, GetTid(), "[REFERENCE_BASE]no crash dumps: %s",
                                                  failure.what());
  }
}

}  // namespace base
