// Each crash is one of this program as its own child: reference_base_tests DIRECTORY WAY.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <thread>

#include "base/mini_jump.h"
#include "tests/support/temporary_directory.h"

#ifdef _WIN32
#include <windows.h>

// After windows.h, which it needs.
#include <dbghelp.h>
#else
#include <sys/wait.h>
#endif

namespace {

const char* thisProgram = nullptr;

struct Crash {
  const char* way;
  int signalNumber;
  const char* content;
  unsigned long exceptionCode;
};

constexpr unsigned long kAccessViolation = 0xC0000005;
constexpr unsigned long kFatalApplicationExit = 0x40000015;

#ifdef __GNUC__
__attribute__((no_sanitize("undefined")))
#endif
void WriteToNowhere() {
  volatile int* volatile nowhere = nullptr;
  *nowhere = 1;
}

// The callback leaves the dump's path in callback.txt.
int CrashIn(const std::filesystem::path& directory, const std::string& way) {
  const auto leavePath = [=](const char* dump) {
    std::ofstream(directory / "callback.txt", std::ios::app) << dump << '\n';
    if (way == "fault in the callback") WriteToNowhere();
  };
  if (way == "after a replacement") {
    base::IMiniJump::GenerateMiniDump((directory / "first").string().c_str(), [](const char*) {});
  }
  base::IMiniJump::GenerateMiniDump((directory / "dumps").string().c_str(), leavePath);
  if (way == "abort") std::abort();
  if (way == "thread") std::thread(WriteToNowhere).join();
  WriteToNowhere();
  return EXIT_SUCCESS;
}

std::string Quoted(const std::string& text) {
  return '"' + text + '"';
}

// How the child ended: its signal, or where there are none, just not in peace.
void RunUntilItCrashes(const std::filesystem::path& directory, const Crash& crash) {
  const std::string command = Quoted(thisProgram) + " " + Quoted(directory.string()) + " " + Quoted(crash.way);
#ifdef _WIN32
  EXPECT_NE(std::system(Quoted(command).c_str()), 0);
#else
  const int status = std::system(("ulimit -c 0; exec " + command).c_str());
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == crash.signalNumber) << "wait status " << status;
#endif
}

void CheckDump(std::string dump, const Crash& crash) {
#ifdef _WIN32
  void* stream = nullptr;
  ASSERT_NE(MiniDumpReadDumpStream(dump.data(), ExceptionStream, nullptr, &stream, nullptr), FALSE);
  EXPECT_EQ(static_cast<MINIDUMP_EXCEPTION_STREAM*>(stream)->ExceptionRecord.ExceptionCode, crash.exceptionCode);
#else
  for (const char* content : {crash.content, "\nregisters", "\nmemory map\n", "[stack]", "\nbacktrace\n"}) {
    EXPECT_NE(dump.find(content), std::string::npos) << content << " is missing in\n" << dump;
  }
  // The crashed function's own frame, so the backtrace went through the signal frame.
  EXPECT_NE(dump.find("reference_base_tests", dump.find("\nbacktrace\n")), std::string::npos) << dump;
#endif
}

TEST(CrashDumpTest, EveryCrashLeavesADumpAndItsPathAndThenTheDefaultActionRuns) {
  for (const Crash& crash : {Crash{"fault", SIGSEGV, "signal SIGSEGV", kAccessViolation},
                             Crash{"thread", SIGSEGV, "fault address 0x", kAccessViolation},
                             Crash{"abort", SIGABRT, "signal SIGABRT", kFatalApplicationExit},
                             Crash{"after a replacement", SIGSEGV, "signal SIGSEGV", kAccessViolation},
                             Crash{"fault in the callback", SIGSEGV, "signal SIGSEGV", kAccessViolation}}) {
    SCOPED_TRACE(crash.way);
    const tests::TemporaryDirectory directory;
    RunUntilItCrashes(directory.path, crash);
    const auto paths = tests::ReadLines(directory / "callback.txt");
    ASSERT_EQ(paths.size(), 1u);
    const std::filesystem::path dump = paths[0];
    EXPECT_EQ(dump.parent_path(), directory / "dumps");
    EXPECT_EQ(dump.extension(), ".dmp");
    CheckDump(tests::ReadFile(dump), crash);
  }
}

}  // namespace

int main(int argumentCount, char** arguments) {
  testing::InitGoogleTest(&argumentCount, arguments);
  if (argumentCount == 3) return CrashIn(arguments[1], arguments[2]);
  thisProgram = arguments[0];
  return RUN_ALL_TESTS();
}
