// Tests whose outcome is a transcript: each step, every call that the library makes to its surroundings in it, each
// field of the gathered status when it changes, and the step's result. What it must be stands in
// transcripts/SUITE.TEST.txt, of a test with parameters in SUITE.TEST.PARAMETER.txt. For whoever changes a rule: with
// QV_WRITE_TRANSCRIPTS=1 in the environment the test writes that file anew and fails, and `git diff` shows what became
// of the rule.
//
// Threads: the test's only. Ownership: a transcript lasts as long as its test.
#ifndef TESTS_LIBRARY_TRANSCRIPT_H
#define TESTS_LIBRARY_TRANSCRIPT_H

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <type_traits>

#include "tests/library/library_test.h"

// A step is written as the transcript shows it.
#define STEP(...) Step(#__VA_ARGS__, [&] { return __VA_ARGS__; })

namespace library_test {

struct Transcript : LibraryTest {
  void TearDown() override {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(test->test_suite_name()) + "." + test->name() + ".txt";
    // Before a parameter.
    std::replace(name.begin(), name.end(), '/', '.');
    const std::filesystem::path file = std::filesystem::path(TRANSCRIPTS) / name;
    if (std::getenv("QV_WRITE_TRANSCRIPTS") != nullptr) {
      std::ofstream(file, std::ios::binary) << text;
      FAIL() << "written anew, compared with nothing";
    }
    std::ifstream stream(file, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), text) << "expected by " << file;
  }

  void Say(const std::string& line) { text += line + '\n'; }

  template <class Work>
  void Step(const std::string& what, Work&& work) {
    Take();
    shown = FieldsOf(Gathered());
    Say("> " + what);
    fakes::Recorder::Watch(&note);
    if constexpr (std::is_void_v<decltype(work())>) {
      work();
      note("");
    } else {
      const auto result = work();
      note("");
      Say("  = " + testing::PrintToString(result));
    }
    fakes::Recorder::Watch(nullptr);
  }
  // The steps that follow begin where the fixture does.
  void Chapter(const std::string& title) {
    StartOver();
    Say("\n" + title);
  }

  std::string When(std::int64_t time) const {
    return begin <= time && time <= Now() ? "in this test" : std::to_string(time);
  }

 protected:
  std::string text;

 private:
  // A message with what the controller's status has gathered so far; null before anything was. Leaves no trace.
  std::shared_ptr<pass_interface::MessageCollect> Gathered() {
    if (!controller) return nullptr;
    const auto sent = Services().messages;
    const int missing = std::exchange(Services().collectorMissing, 0);
    fakes::Recorder::Get().Mute(true);
    Internal().SendMessageCollect(0, 0, 0, "", "");
    fakes::Recorder::Get().Mute(false);
    Services().collectorMissing = missing;
    const auto all = std::exchange(Services().messages, sent);
    return all.size() > sent.size() ? all.back() : nullptr;
  }
  std::map<std::string, std::string> FieldsOf(const std::shared_ptr<pass_interface::MessageCollect>& message) const {
    if (!message) return {};
    const Status status = fakes::StatusOf(*message);
    std::map<std::string, std::string> fields = {
        {"mode", std::to_string(message->defaultMode)},
        {"tag", message->tag},
        {"session", status.sessionId},
        {"phone", status.targetId},
        {"channel", status.channel},
        {"domain", status.wsDomain},
        {"port", status.wsPort},
        {"text", status.statusText},
        {"SDK version", status.sdkVersion},
        {"interface version", status.interfaceVersion},
        {"play answered", When(status.playResponseTime)},
        {"first frame", When(status.firstFrameTime)},
        {"released", When(status.releaseTime)},
        {"attempts", std::to_string(status.connectingCount)},
        {"attempted", When(status.connectingTime)},
        {"lost", When(status.disconnectedTime)},
        {"stood", When(status.connectedTime)},
        {"stands", std::to_string(status.connectedFlag)},
        {"process", status.processName.substr(0, status.processName.find('.'))}};
    for (const auto& [name, time] : status.milestones) fields["milestone " + name] = When(time);
    return fields;
  }
  void ShowChanges(const std::shared_ptr<pass_interface::MessageCollect>& message) {
    for (const auto& [name, value] : FieldsOf(message)) {
      const std::string before = std::exchange(shown[name], value);
      if (before != value && before + value != "0") Say("    * " + name + " [" + value + "]");
    }
  }

  const std::int64_t begin = Now();
  std::map<std::string, std::string> shown;
  // Takes the calls since the last one; a message shows the status that it carries, any other call the gathered one.
  const fakes::Recorder::OnEachCall note = [this](const char*) {
    fakes::Recorder::Watch(nullptr);
    const Calls calls = Take();
    const bool isSent = !calls.empty() && calls.back().starts_with("collect.Report");
    ShowChanges(isSent ? Services().messages.back() : Gathered());
    for (const std::string& call : calls) Say("    " + call);
    fakes::Recorder::Watch(&note);
  };
};

}  // namespace library_test

#endif
