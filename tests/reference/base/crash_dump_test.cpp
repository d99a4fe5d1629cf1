#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

#include "tests/reference/common/temporary_directory.h"

#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace {

struct Crash {
  const char* way;
  int signalNumber;
  const char* content;
};

std::string Quoted(const std::string& text) {
  return '"' + text + '"';
}

// How the child ended: its signal, or where there are none, just not in peace.
void RunUntilItCrashes(const std::filesystem::path& directory, const Crash& crash) {
  const std::string command = Quoted(CRASH_CHILD) + " " + Quoted(directory.string()) + " " + Quoted(crash.way);
#ifdef _WIN32
  EXPECT_NE(std::system(Quoted(command).c_str()), 0);
#else
  const int status = std::system(("ulimit -c 0; exec " + command).c_str());
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == crash.signalNumber) << "wait status " << status;
#endif
}

TEST(CrashDumpTest, EveryCrashLeavesADumpAndItsPathAndThenTheDefaultActionRuns) {
  for (const Crash& crash :
       {Crash{"fault", SIGSEGV, "signal SIGSEGV"}, Crash{"thread", SIGSEGV, "fault address 0x"},
        Crash{"abort", SIGABRT, "signal SIGABRT"}, Crash{"after a replacement", SIGSEGV, "signal SIGSEGV"},
        Crash{"fault in the callback", SIGSEGV, "signal SIGSEGV"}}) {
    SCOPED_TRACE(crash.way);
    const tests::TemporaryDirectory directory;
    RunUntilItCrashes(directory.path, crash);
    const auto paths = tests::ReadLines(directory / "callback.txt");
    ASSERT_EQ(paths.size(), 1u);
    const std::filesystem::path dump = paths[0];
    EXPECT_EQ(dump.parent_path(), directory / "dumps");
    EXPECT_EQ(dump.extension(), ".dmp");
    const std::string text = tests::ReadFile(dump);
#ifdef _WIN32
    EXPECT_EQ(text.substr(0, 4), "MDMP");
#else
    for (const char* content : {crash.content, "\nregisters", "\nmemory map\n", "[stack]", "\nbacktrace\n"}) {
      EXPECT_NE(text.find(content), std::string::npos) << content << " is missing in\n" << text;
    }
    // The crashed function's own frame, so the backtrace went through the signal frame.
    EXPECT_NE(text.find("reference_base_crash_child", text.find("\nbacktrace\n")), std::string::npos) << text;
#endif
  }
}

}  // namespace
