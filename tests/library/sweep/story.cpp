#include "tests/library/sweep/story.h"

namespace sweep {
namespace {

using library_test::InstanceInfo;
using library_test::MakeInfo;

std::int32_t ReleaseAndInit(LibraryTest& test) {
  test.controller->ReleasePhoneConnect();
  return test.Init();
}

std::int32_t Reconnect(LibraryTest& test) {
  if (ReleaseAndInit(test) != 0) return -1;
  {
    // The story may be in CreateWS.
    const std::lock_guard lock(fakes::StateMutex());
    test.Services().createWsFails = false;
  }
  if (test.controller->GetPhoneConnect() != 0) throw std::runtime_error("GetPhoneConnect is refused");
  if (!test.CommandsAreOpen()) test.Grant();
  test.controller->ChangeIsp(1);
  return 0;
}

void SpeakAsSdk(LibraryTest& test) {
  test.Internal().SetSdkVersion("a version of the SDK");
  test.Internal().RecordMilestone("a milestone of the SDK", 1);
  test.Internal().SendMessageCollect(0, 0, -1, "a detail of the message", "more about the message");
}

void ChangeIspInNotice(LibraryTest& test) {
  test.At("notice.OnNotice7", [&test] { test.controller->ChangeIsp(2); });
  test.Notices().OnNotice5();
}

}  // namespace

const std::vector<Story>& Stories() {
  static const auto* const stories = new std::vector<Story>{
      {"init", kIdle,
       [](auto& t) {
         const auto held = t.controller;
         return t.Init();
       },
       6},
      {"connect with a miss", kReady, [](auto& t) { return t.controller->GetPhoneConnect(); }, 5},
      {"connect with a hit", kCached, [](auto& t) { return t.controller->GetPhoneConnect(); }, 13},
      {"granted", kRequested, [](auto& pass, auto&) { BringAnswer(pass, 0, 0, "a-long-session-1"); }, 10},
      {"granted again", kConnected, [](auto& pass, auto&) { BringAnswer(pass, 0, 0, "a-long-session-2"); }, 9},
      {"refused", kConnected, [](auto& pass, auto&) { BringAnswer(pass, 0, kRefused, ""); }, 6},
      {"request failed", kRequested, [](auto& pass, auto&) { BringAnswer(pass, 1, 0, ""); }, 5},
      {"refresh", kConnected,
       [](auto& pass, auto& ws) {
         ws.OnErrorCode(kSessionExpired, "");
         Renew(pass, 0);
       },
       2},
      {"refresh refused", kConnected, [](auto& pass, auto&) { Renew(pass, kRefused); }, 6},
      {"line switch", kConnected, [](auto& t) { return t.controller->ChangeIsp(1); }, 4},
      {"line switch that fails",
       [](auto& t) {
         t.Connect();
         t.Services().createWsFails = true;
       },
       [](auto& t) { return t.controller->ChangeIsp(1); }, 9},
      {"command", kConnected, [](auto& t) { return t.controller->SendInReq8("text"); }, 1},
      {"every notice", kConnected, [](auto&, auto& ws) { EveryNotice(ws); }, 38},
      {"embedding SDK", kIdle, SpeakAsSdk, 2},
      {"release", kConnected, [](auto& t) { t.controller->ReleasePhoneConnect(); }, 7},
      {"destruction", kConnected, [](auto& t) { t.controller.reset(); }, 7},
  };
  return *stories;
}

const std::vector<Intruder>& Intruders() {
  static const auto* const intruders = new std::vector<Intruder>{
      {"release", [](auto& t) { t.controller->ReleasePhoneConnect(); }, true},
      {"last pointer dropped", [](auto& t) { t.controller.reset(); }},
      {"re-Init", ReleaseAndInit, true},
      {"reconnect", Reconnect, true},
      {"second connect", [](auto& t) { return t.controller->GetPhoneConnect(); }},
      {"ChangeIsp", [](auto& t) { return t.controller->ChangeIsp(2); }},
      {"ChangeIsp in a notice", ChangeIspInNotice},
      {"forwarder", [](auto& t) { return t.controller->SendInReq8("text"); }},
      {"granted", [](auto& pass, auto&) { BringAnswer(pass, 0, 0, "a-long-session-3"); }},
      {"refused", [](auto& pass, auto&) { BringAnswer(pass, 0, kRefused, ""); }},
      {"refreshed", [](auto& pass, auto&) { Renew(pass, 0); }},
      {"disconnected", [](auto&, auto& ws) { ws.OnConnectState(0); }},
  };
  return *intruders;
}

const Intruder& Failure() {
  static const auto* const failure = [] {
    auto* const made = new Intruder{"failure", [](LibraryTest&) { throw ServiceFailure(); }};
    made->action.needsController = false;
    return made;
  }();
  return *failure;
}

void BringAnswer(IPassInterfaceNotic& sink, std::int32_t transportResult, std::int32_t code, const char* sessionId) {
  auto answer = std::make_shared<InstanceInfo>(MakeInfo(sessionId));
  answer->code = code;
  answer->message = "a message with its reason";
  sink.OnPhoneConnectRsp(transportResult, 200, answer);
}

void EveryNotice(IWSInterfaceNotic& sink) {
  sink.OnConnectState(1);
  sink.OnConnectStep(5);
  sink.OnConnectStep(0);
  sink.OnConnectState(2);
  sink.OnAuthRsp(1, 2, 3, "264");
  sink.OnPlayRsp(1, 2, 3, 4, 5, 6, 7, 8, 9, 10);
  sink.OnFirstFrame(1, 2, 3, 4);
  sink.OnVideoParamRsp(0, 1, 30, 3, 400, 500);
  sink.OnNotice6("text");
  sink.OnErrorCode(123, "why");
  sink.OnErrorCode(60102029, "why");
  sink.OnConnectState(0);
}

void Renew(IPassInterfaceNotic& sink, std::int32_t code) {
  auto renewed = std::make_shared<pass_interface::RefreshSessionRsp>();
  renewed->code = code;
  renewed->sessionId = "a-long-session-renewed";
  sink.OnRefreshSessionRsp(0, 200, renewed);
}

void StoryTest::ExpectNothingHeld() {
  EXPECT_EQ(Services().LiveConnections(), 0);
  EXPECT_THAT(Services().liveRows, testing::IsEmpty());
  EXPECT_EQ(Services().stopped, Services().made.size());
  for (const auto& connection : Services().connections) EXPECT_TRUE(connection.object.expired());
  for (const auto& service : Services().made) EXPECT_TRUE(service.expired());
}

void StoryTest::ExpectSilenceAfterRelease() {
  if (!controller) return;
  // What a failed Init made is kept for the next one, and stopped with it.
  Init();
  controller->ReleasePhoneConnect();
  ExpectNothingHeld();
  EXPECT_EQ(frontEnd.use_count(), 1);
  Take();
  EveryNotice(Notices());
  Notices().OnErrorCode(kSessionExpired, "");
  auto& pass = dynamic_cast<IPassInterfaceNotic&>(*controller);
  for (const std::int32_t code : {0, kRefused}) {
    BringAnswer(pass, 0, code, "a-long-session-late");
    BringAnswer(pass, 1, code, "a-long-session-late");
    Renew(pass, code);
  }
  for (const std::string& call : Take()) EXPECT_FALSE(call.starts_with("notice.") || call.starts_with("ws")) << call;
  ExpectNothingHeld();
}

void StoryTest::ExpectThatItConnectsAgain() {
  if (!controller) NewController();
  Services().sessionCache.clear();
  const std::size_t before = Services().connections.size();
  EXPECT_EQ(Init(), 0);
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  Grant();
  EXPECT_EQ(Services().connections.size(), before + 1);
  EXPECT_EQ(Services().LiveConnections(), 1);
  EXPECT_EQ(Services().liveRows.size(), 1U);
  EXPECT_TRUE(CommandsAreOpen());
  controller->ReleasePhoneConnect();
  ExpectNothingHeld();
}

}  // namespace sweep
