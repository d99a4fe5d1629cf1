#include "reference/base/crash_dump_linux.h"

#include <execinfo.h>
#include <fcntl.h>
#include <ucontext.h>
#include <unistd.h>

#include <array>
#include <cstdint>

#include "reference/base/crash_text_linux.h"

namespace base {
namespace {

constexpr int kMaxFrames = 64;
using Line = CrashText<256>;

const char* SignalName(int signalNumber) {
  switch (signalNumber) {
    case SIGSEGV:
      return "SIGSEGV";
    case SIGABRT:
      return "SIGABRT";
    case SIGBUS:
      return "SIGBUS";
    case SIGFPE:
      return "SIGFPE";
    case SIGILL:
      return "SIGILL";
    default:
      return "signal";
  }
}

void WriteHead(int descriptor, int signalNumber, const siginfo_t& information) {
  Line line;
  line.Add("signal ").Add(SignalName(signalNumber)).Add(" (").AddNumber(signalNumber).Add(") code ");
  line.AddNumber(information.si_code).WriteLine(descriptor);
  line.Add("process ").AddNumber(::getpid()).Add(" thread ").AddNumber(::gettid()).WriteLine(descriptor);
  // An abort was sent by a process, and has no address.
  if (signalNumber == SIGABRT) return;
  line.Add("fault address ").AddHex(reinterpret_cast<std::uintptr_t>(information.si_addr)).WriteLine(descriptor);
}

void WriteRegisters(int descriptor, const void* context) {
#if defined(__x86_64__)
  struct Register {
    const char* name;
    int index;
  };
  static constexpr Register kRegisters[] = {
      {"rip", REG_RIP}, {"rsp", REG_RSP}, {"rbp", REG_RBP}, {"rax", REG_RAX}, {"rbx", REG_RBX}, {"rcx", REG_RCX},
      {"rdx", REG_RDX}, {"rsi", REG_RSI}, {"rdi", REG_RDI}, {"r8", REG_R8},   {"r9", REG_R9},   {"r10", REG_R10},
      {"r11", REG_R11}, {"r12", REG_R12}, {"r13", REG_R13}, {"r14", REG_R14}, {"r15", REG_R15}, {"eflags", REG_EFL}};
  const auto& values = static_cast<const ucontext_t*>(context)->uc_mcontext.gregs;
  Line line;
  line.Add("registers").WriteLine(descriptor);
  for (const Register& entry : kRegisters) {
    line.Add("  ").Add(entry.name).Add(" ").AddHex(static_cast<std::uint64_t>(values[entry.index]));
    line.WriteLine(descriptor);
  }
#else
  static_cast<void>(context);
  Line().Add("registers: not recorded on this processor").WriteLine(descriptor);
#endif
}

void WriteMemoryMap(int descriptor) {
  Line().Add("memory map").WriteLine(descriptor);
  const int map = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
  if (map < 0) return;
  std::array<char, 4096> block;
  for (;;) {
    const ssize_t size = ::read(map, block.data(), block.size());
    if (size <= 0) break;
    Line::WriteAll(descriptor, block.data(), static_cast<std::size_t>(size));
  }
  ::close(map);
}

void WriteBacktrace(int descriptor) {
  Line().Add("backtrace").WriteLine(descriptor);
  std::array<void*, kMaxFrames> frames;
  ::backtrace_symbols_fd(frames.data(), ::backtrace(frames.data(), kMaxFrames), descriptor);
}

}  // namespace

void WriteCrashDump(int descriptor, int signalNumber, const siginfo_t& information, const void* context) {
  WriteHead(descriptor, signalNumber, information);
  WriteRegisters(descriptor, context);
  WriteMemoryMap(descriptor);
  WriteBacktrace(descriptor);
}

void PrepareCrashDump() {
  std::array<void*, 1> frame;
  ::backtrace(frame.data(), 1);
}

}  // namespace base
