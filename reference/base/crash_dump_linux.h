// The text dump of a crash.
#ifndef REFERENCE_BASE_CRASH_DUMP_LINUX_H
#define REFERENCE_BASE_CRASH_DUMP_LINUX_H

#include <csignal>

namespace base {

// Writes signal, registers, memory map and backtrace, the surest first. context: what the handler was given.
// Async-signal-safe once PrepareCrashDump has run, the backtrace as far as a broken stack allows.
void WriteCrashDump(int descriptor, int signalNumber, const siginfo_t& information, const void* context);

// Loads what the backtrace needs, which a crashed process could not load any more.
void PrepareCrashDump();

}  // namespace base

#endif
