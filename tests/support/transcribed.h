// Tests whose outcome is a text: each step, what it brought about, and its result. What it must be stands beside the
// test in transcripts/SUITE.TEST.txt, of a test with parameters in SUITE.TEST.PARAMETER.txt. For whoever changes a
// rule: with QV_WRITE_TRANSCRIPTS=1 in the environment the test writes that file anew and fails, and `git diff` shows
// what became of the rule.
//
// Threads: the test's only. Ownership: a transcript lasts as long as its test.
#ifndef TESTS_SUPPORT_TRANSCRIBED_H
#define TESTS_SUPPORT_TRANSCRIBED_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <type_traits>

#include "tests/support/temporary_directory.h"

// A step is written as the transcript shows it.
#define STEP(...) Step(#__VA_ARGS__, [&] { return __VA_ARGS__; })

namespace tests {

template <class Fixture = testing::Test>
struct Transcribed : Fixture {
  void TearDown() override {
    const std::filesystem::path file = File();
    if (std::getenv("QV_WRITE_TRANSCRIPTS") != nullptr) {
      std::filesystem::create_directories(TRANSCRIPTS);
      if (!text.empty()) WriteFile(file, text);
      FAIL() << "written anew, compared with nothing";
    }
    EXPECT_EQ(ReadFile(file), text) << "expected by " << file;
  }

  void Say(const std::string& line) { text += line + '\n'; }
  // What is no case of the transcript's.
  void Indent(const std::string& line) { Say("    " + line); }

  // For cases that are lines of text: they stand in the transcript alone, each with its outcome indented below it. To
  // add one, write the line there. Lines that begin with # are headings.
  template <class Work>
  void ForEachCase(Work&& outcomeOf) {
    int cases = 0;
    for (const std::string& line : ReadLines(File())) {
      if (line.starts_with("  ") || line.starts_with("> ")) continue;
      Say(line);
      if (line.empty() || line.starts_with("#")) continue;
      Indent(outcomeOf(line));
      ++cases;
    }
    EXPECT_GT(cases, 0) << "no case in " << File();
  }

  template <class Work>
  void Step(const std::string& what, Work&& work) {
    BeforeStep();
    Say("> " + what);
    if constexpr (std::is_void_v<decltype(work())>) {
      work();
      AfterStep();
    } else {
      const auto result = work();
      AfterStep();
      Say("  = " + testing::PrintToString(result));
    }
  }

 protected:
  // Around the work of each step.
  virtual void BeforeStep() {}
  virtual void AfterStep() {}

  std::string text;

 private:
  static std::filesystem::path File() {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(test->test_suite_name()) + "." + test->name() + ".txt";
    // Before a parameter.
    std::replace(name.begin(), name.end(), '/', '.');
    return std::filesystem::path(TRANSCRIPTS) / name;
  }
};

}  // namespace tests

#endif
