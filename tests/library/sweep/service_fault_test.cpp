// Every story, undisturbed and with each call into a service failing. What the story leads to stands in the transcript,
// with a fault only where it makes a difference; and the same controller connects once the service is well again.
#include "tests/library/sweep/story.h"
#include "tests/library/transcript.h"

namespace sweep {
namespace {

using fakes::Answers;

struct Fault {
  const char* name;
  int Answers::*answer;
  int value;
};

const Fault kFaults[] = {
    {"no HTTP service", &Answers::passMissing, 1},
    {"no WebSocket manager", &Answers::wsManagerMissing, 1},
    {"no collector", &Answers::collectorMissing, 1},
    {"no session cache", &Answers::databaseMissing, 1},
    {"the HTTP service does not start", &Answers::passInitialiseResult, 17},
    {"the WebSocket manager does not start", &Answers::wsInitialiseResult, -18},
    {"the HTTP service takes no request", &Answers::requestResult, 5},
    {"the connection takes no command", &Answers::commandResult, -5},
    {"no connection is made", &Answers::createWsFails, 1},
    {"no row is inserted", &Answers::insertResult, -1},
    {"no row is updated", &Answers::updateResult, -1},
    {"no row is deleted", &Answers::deleteResult, -1},
    {"nothing is enciphered", &Answers::encryptFails, 1},
    {"no session is loaded", &Answers::loadFailure, -1},
    {"a loaded session is spoilt", &Answers::rowsAreSpoilt, 1},
    {"no session is saved", &Answers::saveResult, -1},
};

struct ServiceFault : library_test::Transcript, testing::WithParamInterface<std::size_t> {
  // The steps of a story, from its beginning.
  std::string Tell(const Story& story, const Fault* fault) {
    StartOver();
    story.prepare(*this);
    if (fault) Services().*fault->answer = fault->value;
    const std::string before = std::exchange(text, "");
    std::int32_t result = kSaysNothing;
    Step(std::string(story.name) + (fault ? std::string("; ") + fault->name : ""),
         [&] { result = story.action.run(*this); });
    if (result != kSaysNothing) Say("  = " + std::to_string(result));
    return std::exchange(text, before);
  }

  // What has been reached before is refused here, and need not be repeated.
  void ExpectThatItConnects() {
    static_cast<Answers&>(Services()) = {};
    Init();
    controller->GetPhoneConnect();
    if (!CommandsAreOpen()) Grant();
    EXPECT_TRUE(CommandsAreOpen());
    EXPECT_EQ(Services().LiveConnections(), 1);
  }
};

TEST_P(ServiceFault, LeadsToItsCodeNoticeAndTelemetryAndThenTheControllerConnects) {
  const auto withoutName = [](const std::string& told) { return told.substr(told.find('\n')); };
  const Story& story = Stories()[GetParam()];
  const std::string usual = Tell(story, nullptr);
  Say(usual);
  for (const Fault& fault : kFaults) {
    SCOPED_TRACE(fault.name);
    const std::string told = Tell(story, &fault);
    if (withoutName(told) != withoutName(usual)) Say(told);
    if (!controller) NewController();
    ExpectThatItConnects();
    controller->ReleasePhoneConnect();
    ExpectThatItConnects();
    controller.reset();
    EXPECT_EQ(Services().LiveConnections(), 0);
  }
}

INSTANTIATE_TEST_SUITE_P(, ServiceFault, testing::Range(std::size_t{0}, Stories().size()), [](const auto& tested) {
  std::string name(Stories()[tested.param].name);
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
});

}  // namespace
}  // namespace sweep
