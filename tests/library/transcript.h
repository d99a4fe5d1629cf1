// Transcripts of the library: in each step stand every call that the library makes to its surroundings, and each field
// of the gathered status when it changes.
//
// Threads: the test's only. Ownership: a transcript lasts as long as its test.
#ifndef TESTS_LIBRARY_TRANSCRIPT_H
#define TESTS_LIBRARY_TRANSCRIPT_H

#include <map>
#include <string>

#include "tests/library/library_test.h"
#include "tests/support/transcribed.h"

namespace library_test {

struct Transcript : tests::Transcribed<LibraryTest> {
  // The steps that follow begin where the fixture does.
  void Chapter(const std::string& title) {
    StartOver();
    Say("\n" + title);
  }

  std::string When(std::int64_t time) const {
    return begin <= time && time <= Now() ? "in this test" : std::to_string(time);
  }

 protected:
  void BeforeStep() override {
    Take();
    shown = FieldsOf(Gathered());
    fakes::Recorder::Watch(&note);
  }
  void AfterStep() override {
    note("");
    fakes::Recorder::Watch(nullptr);
  }

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
