// The crash handler on Linux: dump, callback, then the signal's default action, so that the exit status and a core file
// are those of a process without a handler.
//
// The handler runs on the crashed thread, on an alternate stack where GenerateMiniDump was called from that thread;
// other threads have none, and a stack overflow on them leaves no dump.
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <csignal>
#include <ctime>
#include <exception>
#include <filesystem>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "base/base_log_interface.h"
#include "base/mini_jump.h"
#include "base/thread_id.h"
#include "reference/base/crash_dump_linux.h"
#include "reference/base/crash_text_linux.h"
#include "reference/base/log_line.h"

namespace base {
namespace {

constexpr int kCrashSignals[] = {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL};
constexpr std::size_t kAlternateStackBytes = 64 * 1024;
constexpr unsigned kSecondsForTheHandler = 10;

struct DumpTarget {
  std::string directory;
  std::function<void(const char*)> onDump;
};

// A crashing thread reads this while another replaces it, so a target that was published once is never freed.
std::atomic<const DumpTarget*> currentTarget{nullptr};
std::atomic<pid_t> crashedThread{0};
// Of the crashed thread only.
volatile std::sig_atomic_t callbackBegun = 0;
CrashText<PATH_MAX> dumpPath;

void RestoreDefault(int signalNumber) {
  struct sigaction action {};
  action.sa_handler = SIG_DFL;
  ::sigaction(signalNumber, &action, nullptr);
}

// A callback may block on a lock that the crash left taken. The process ends all the same.
void BoundTheHandler() {
  RestoreDefault(SIGALRM);
  sigset_t alarmOnly;
  ::sigemptyset(&alarmOnly);
  ::sigaddset(&alarmOnly, SIGALRM);
  ::pthread_sigmask(SIG_UNBLOCK, &alarmOnly, nullptr);
  ::alarm(kSecondsForTheHandler);
}

void WriteDump(const DumpTarget& target, int signalNumber, const siginfo_t& information, const void* context) {
  dumpPath.Add(target.directory.c_str()).Add("/crash-").AddNumber(::getpid());
  dumpPath.Add("-").AddNumber(std::time(nullptr)).Add(".dmp");
  // Registers can hold secrets: for the owner only.
  const int descriptor = ::open(dumpPath.Text(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (descriptor < 0) {
    CrashText<PATH_MAX + 64>().Add("[REFERENCE_BASE]cannot write ").Add(dumpPath.Text()).WriteLine(STDERR_FILENO);
    dumpPath.Clear();
    return;
  }
  WriteCrashDump(descriptor, signalNumber, information, context);
  ::close(descriptor);
}

void OnCrash(int signalNumber, siginfo_t* information, void* context) {
  const pid_t self = ::gettid();
  pid_t none = 0;
  const DumpTarget* const target = currentTarget;
  if (crashedThread.compare_exchange_strong(none, self)) {
    BoundTheHandler();
    WriteDump(*target, signalNumber, *information, context);
  } else if (none != self) {
    // Another thread crashed first and is about to end the process.
    for (;;) ::pause();
  }
  // A second fault on this thread comes here too: one in the dump goes on with what stands written, one in the callback
  // goes straight to the end.
  if (callbackBegun == 0) {
    callbackBegun = 1;
    if (*dumpPath.Text() != '\0' && target->onDump) target->onDump(dumpPath.Text());
  }
  RestoreDefault(signalNumber);
  ::raise(signalNumber);
}

// The stack is never freed: it belongs to its thread until that ends, which nobody here sees.
void GiveThisThreadAnAlternateStack() {
  stack_t stack{};
  if (::sigaltstack(nullptr, &stack) != 0 || (stack.ss_flags & SS_DISABLE) == 0) return;
  static auto* const stacks = new std::list<std::unique_ptr<char[]>>;
  stack = {};
  stack.ss_sp = stacks->emplace_back(std::make_unique<char[]>(kAlternateStackBytes)).get();
  stack.ss_size = kAlternateStackBytes;
  ::sigaltstack(&stack, nullptr);
}

void InstallHandlers() {
  struct sigaction action {};
  action.sa_sigaction = OnCrash;
  ::sigemptyset(&action.sa_mask);
  action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
  for (const int signalNumber : kCrashSignals) ::sigaction(signalNumber, &action, nullptr);
}

void Install(const char* dumpDirectory, std::function<void(const char*)> onDump) {
  static std::mutex installMutex;
  static auto* const targets = new std::list<DumpTarget>;
  // Absolute, because the working directory may be another one by then.
  const std::filesystem::path directory = std::filesystem::absolute(dumpDirectory);
  const std::lock_guard<std::mutex> lock(installMutex);
  targets->push_back({directory.string(), std::move(onDump)});
  GiveThisThreadAnAlternateStack();
  PrepareCrashDump();
  currentTarget = &targets->back();
  InstallHandlers();
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
