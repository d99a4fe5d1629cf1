// Every call into every service fails, one at a time: what it leads to, in order, and that the same controller connects
// once the service is well again.
#include <map>

#include "tests/library/sweep/story.h"

namespace sweep {
namespace {

using fakes::Answers;
using library_test::Calls;

// Short names for the calls that belong to every connect; the others stand in the table as they are recorded.
const std::map<std::string, std::string> kNames = {
    {"cipher.Encrypt", "encrypt"},
    {"log60 Aes256Encrypt Failed", "no cipher"},
    {"pass.Create()", "make pass"},
    {"wsManager.Create()", "make manager"},
    {"pass.Initialise(https://cloud, credential-1, credential-2, credential-3, 1.13.0, sink, null, 5000, 5000, 1)",
     "start pass"},
    {"wsManager.Initialise(10, 5000)", "start manager"},
    {"log0 [TimeConsumingFlag][phone-1] start; Begin GetPhoneConnect", "connect"},
    {"db.LoadSessionCache()", "load"},
    {"pass.RequestPhoneConnect(phone-1, , , null)", "request"},
    {"log0 [TimeConsumingFlag][phone-1] HandlePhoneConnect; Begin connect ws", "handle"},
    {"wsManager.CreateWS(wss://10.0.0.7:8443)", "create"},
    {"collect.InsertInstanceInfo(phone-1, session-1, 1, websocket)", "insert"},
    {"notice.OnIspList(1=one;2=two;, 2)", "lines"},
    {"db.SaveSessionCache(9000000000000)", "save"},
    {"log60 [phone-1]Init WS failed;Error code [60701001]", "no ws"},
    {"notice.OnStatus(60701001, web socket init failed)", "tell 60701001"},
    {"collect.Report(0, 0, 60701001, , )", "send 60701001"},
    {"log0 [phone-1] Connect connected;Error code [0]", "stands"},
    {"notice.OnStatus(0, success)", "tell 0"},
    {"wsManager.DestroyWS(1)", "destroy"},
    {"wsManager.Stop()", "stop manager"},
    {"pass.Stop()", "stop pass"},
};

std::string Named(const Calls& calls) {
  std::string text;
  for (const std::string& call : calls) {
    const auto known = kNames.find(call);
    text += (text.empty() ? "" : " | ") + (known != kNames.end() ? known->second : call);
  }
  return text;
}

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

const struct Fault {
  void (*prepare)(LibraryTest&);
  int Answers::*answer;
  int value;
  Action action;
  std::int32_t result;
  const char* calls;
} kFaults[] = {
    {kIdle, &Answers::passMissing, 1, kInit, -1, "encrypt | make pass | make manager | encrypt | make pass"},
    {kIdle, &Answers::wsManagerMissing, 1, kInit, -1, "encrypt | make pass | make manager | encrypt | make manager"},
    {kIdle, &Answers::passInitialiseResult, 17, kInit, 17,
     "encrypt | make pass | make manager | start pass | encrypt | start pass"},
    {kIdle, &Answers::wsInitialiseResult, -18, kInit, -18,
     "encrypt | make pass | make manager | start pass | start manager | encrypt | start pass | start manager"},
    {kIdle, &Answers::encryptFails, 1, kWholeConnect, kSaysNothing,
     "encrypt | no cipher | make pass | make manager | start pass | start manager | connect | request | handle | "
     "create | insert | lines"},
    {kCached, &Answers::databaseMissing, 1, kConnect, 0, "connect | request"},
    {kCached, &Answers::loadFailure, -1, kConnect, 0, "connect | load | request"},
    {kSpoiltRow, &Answers::saveResult, 0, kConnect, 0,
     "connect | load | cipher.Decrypt | log60 Aes256Decrypt Failed | log60 parse json[] failed | request"},
    {kReady, &Answers::requestResult, 5, kConnect, -1, "connect | load | request | log60 GetPhoneConnect failed"},
    {kRequested, &Answers::createWsFails, 1, kGrantAndCommand, -1,
     "handle | create | no ws | tell 60701001 | send 60701001 | insert | lines | encrypt | save"},
    {kRequested, &Answers::collectorMissing, 1, kGrant, kSaysNothing, "handle | create | lines | encrypt | save"},
    {kRequested, &Answers::insertResult, -1, kGrant, kSaysNothing,
     "handle | create | insert | log60 InsertInstanceInfo failed | lines | encrypt | save"},
    {kConnected, &Answers::updateResult, -1, kGrantAnother, kSaysNothing,
     "handle | collect.UpdataInstanceSessionId(7, session-22, 10) | log60 UpdataInstanceSessionId failed | lines | "
     "encrypt | save"},
    {kRequested, &Answers::encryptFails, 1, kGrant, kSaysNothing,
     "handle | create | insert | lines | encrypt | no cipher"},
    {kRequested, &Answers::saveResult, -1, kGrant, kSaysNothing, "handle | create | insert | lines | encrypt | save"},
    {kRequested, &Answers::databaseMissing, 1, kGrant, kSaysNothing, "handle | create | insert | lines | encrypt"},
    {kConnected, &Answers::commandResult, -5, kRenew, kSaysNothing, "ws.SetSessionId(session-renewed)"},
    {kConnected, &Answers::requestResult, 5, kExpire, kSaysNothing, "pass.RequestRefreshSession(session-1, , 0)"},
    {kConnected, &Answers::commandResult, -5, kStand, kSaysNothing,
     "ws.SendReq17(9) | stands | tell 0 | collect.Report(1, 3, , , )"},
    {kConnected, &Answers::collectorMissing, 1, kStand, kSaysNothing, "ws.SendReq17(9) | stands | tell 0"},
    {kConnected, &Answers::commandResult, -5, kAsk, kSaysNothing, "notice.OnNotice8(text) | ws.SendReq9(text, 0)"},
    {kConnected, &Answers::commandResult, -5, kCommand, -5, "ws.SendReq7(text)"},
    {kConnected, &Answers::createWsFails, 1, kChangeIsp, -1,
     "log20 Change Isp [2][two] | destroy | wsManager.CreateWS(wss://10.2.0.1:82) | no ws | tell 60701001 | send "
     "60701001"},
    {kConnected, &Answers::deleteResult, -1, kRelease, kSaysNothing,
     "collect.Report(1, 4, , , ) | destroy | stop manager | stop pass | collect.DeleteInstanceInfo(7) | log60 "
     "DeleteInstanceInfo failed"},
    {kConnected, &Answers::collectorMissing, 1, kRelease, kSaysNothing, "destroy | stop manager | stop pass"},
};

struct ServiceFault : LibraryTest {
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
    SCOPED_TRACE("fault " + std::to_string(&fault - kFaults) + ": " + fault.calls);
    StartOver();
    fault.prepare(*this);
    Services().*fault.answer = fault.value;
    EXPECT_EQ(fault.action.run(*this), fault.result);
    EXPECT_EQ(Named(Take()), fault.calls);
    static_cast<Answers&>(Services()) = {};
    ExpectThatItConnects();
    controller->ReleasePhoneConnect();
    ExpectThatItConnects();
    controller.reset();
    EXPECT_EQ(Services().LiveConnections(), 0);
  }
  RecordProperty("faults", static_cast<int>(std::size(kFaults)));
}

}  // namespace
}  // namespace sweep
