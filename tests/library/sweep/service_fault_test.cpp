// Every call into every service fails, one at a time: what it leads to stands in the transcript, and the same controller
// connects once the service is well again.
#include "tests/library/sweep/story.h"
#include "tests/library/transcript.h"

namespace sweep {
namespace {

using fakes::Answers;

// Twice, for what a failed Init made is kept for the next one.
constexpr auto kInit = [](LibraryTest& t) {
  const std::int32_t result = t.Init();
  EXPECT_EQ(t.Init(), result);
  EXPECT_EQ(t.controller->GetPhoneConnect(), -1);
  t.Notices().OnNotice5();
  return result;
};
constexpr auto kConnect = [](LibraryTest& t) { return t.controller->GetPhoneConnect(); };
constexpr auto kWholeConnect = [](LibraryTest& t) {
  EXPECT_EQ(t.Init(), 0);
  EXPECT_EQ(t.controller->GetPhoneConnect(), 0);
  t.Grant();
};
constexpr auto kGrant = [](LibraryTest& t) { t.Grant(); };
constexpr auto kGrantAnother = [](LibraryTest& t) { t.Grant(library_test::MakeInfo("session-22")); };
constexpr auto kGrantAndCommand = [](LibraryTest& t) { return t.Grant(), t.controller->SendInReq4(1, 2); };
constexpr auto kCommand = [](LibraryTest& t) { return t.controller->SendInReq8("text"); };
constexpr auto kChangeIsp = [](LibraryTest& t) { return t.controller->ChangeIsp(2); };
constexpr auto kRelease = [](LibraryTest& t) { t.controller->ReleasePhoneConnect(); };
constexpr auto kRenew = [](auto& pass, auto&) { Renew(pass, 0); };
constexpr auto kExpire = [](auto&, auto& ws) { ws.OnErrorCode(60103013, ""); };
constexpr auto kStand = [](auto&, auto& ws) { ws.OnConnectState(2); };
constexpr auto kAsk = [](auto&, auto& ws) { ws.OnNotice6("text"); };
constexpr auto kSpoiltRow = [](LibraryTest& t) {
  kCached(t);
  t.Services().sessionCache.begin()->second.cipherText.back() ^= 1;
};

struct Fault {
  const char* text;
  void (*prepare)(LibraryTest&);
  int Answers::*answer;
  int value;
  Action action;
};
#define FAULT(prepare, answer, value, action) \
  { #prepare ", " #answer " = " #value ", " #action, prepare, &Answers::answer, value, action }

const Fault kFaults[] = {
    FAULT(kIdle, passMissing, 1, kInit),
    FAULT(kIdle, wsManagerMissing, 1, kInit),
    FAULT(kIdle, passInitialiseResult, 17, kInit),
    FAULT(kIdle, wsInitialiseResult, -18, kInit),
    FAULT(kIdle, encryptFails, 1, kWholeConnect),
    FAULT(kCached, databaseMissing, 1, kConnect),
    FAULT(kCached, loadFailure, -1, kConnect),
    FAULT(kSpoiltRow, saveResult, 0, kConnect),
    FAULT(kReady, requestResult, 5, kConnect),
    FAULT(kRequested, createWsFails, 1, kGrantAndCommand),
    FAULT(kRequested, collectorMissing, 1, kGrant),
    FAULT(kRequested, insertResult, -1, kGrant),
    FAULT(kConnected, updateResult, -1, kGrantAnother),
    FAULT(kRequested, encryptFails, 1, kGrant),
    FAULT(kRequested, saveResult, -1, kGrant),
    FAULT(kRequested, databaseMissing, 1, kGrant),
    FAULT(kConnected, commandResult, -5, kRenew),
    FAULT(kConnected, requestResult, 5, kExpire),
    FAULT(kConnected, commandResult, -5, kStand),
    FAULT(kConnected, collectorMissing, 1, kStand),
    FAULT(kConnected, commandResult, -5, kAsk),
    FAULT(kConnected, commandResult, -5, kCommand),
    FAULT(kConnected, createWsFails, 1, kChangeIsp),
    FAULT(kConnected, deleteResult, -1, kRelease),
    FAULT(kConnected, collectorMissing, 1, kRelease),
};

struct ServiceFault : library_test::Transcript {
  // What has been reached before is refused here, and need not be repeated.
  void ExpectThatItConnects() {
    Init();
    controller->GetPhoneConnect();
    if (!CommandsAreOpen()) Grant();
    EXPECT_TRUE(CommandsAreOpen());
    EXPECT_EQ(Services().LiveConnections(), 1);
  }
};

TEST_F(ServiceFault, LeadsToItsCodeNoticeAndTelemetryAndThenTheControllerConnects) {
  for (const Fault& fault : kFaults) {
    SCOPED_TRACE(fault.text);
    StartOver();
    fault.prepare(*this);
    Services().*fault.answer = fault.value;
    std::int32_t result = kSaysNothing;
    Step(fault.text, [&] { result = fault.action.run(*this); });
    if (result != kSaysNothing) Say("  = " + std::to_string(result));
    static_cast<Answers&>(Services()) = {};
    ExpectThatItConnects();
    controller->ReleasePhoneConnect();
    ExpectThatItConnects();
    controller.reset();
    EXPECT_EQ(Services().LiveConnections(), 0);
  }
}

}  // namespace
}  // namespace sweep
