// The three kinds of thread against each other without a pause, for the sanitizers. The order of things, one
// interleaving after the other, is the sweep's.
#include "tests/library/fakes/threads.h"
#include "tests/library/library_test.h"

namespace library_test {
namespace {

using fakes::Worker;

using Concurrency = LibraryTest;

TEST_F(Concurrency, ASessionThatIsRenewedWhileItsConnectionIsBuiltReachesIt) {
  Connect();
  At("wsManager.CreateWS", [&] {
    auto renewed = std::make_shared<pass_interface::RefreshSessionRsp>();
    renewed->code = 0;
    renewed->sessionId = "session-9";
    PassSink()->OnRefreshSessionRsp(0, 200, renewed);
  });
  EXPECT_EQ(controller->ChangeIsp(1), 0);
  EXPECT_THAT(Take(), Contains("ws.SetSessionId(session-9)").Times(1));
}

TEST_F(Concurrency, EveryThreadAgainstEveryOther) {
  // The controller itself serves as the sinks, so that notices come at every moment, after a release too.
  auto& pass = dynamic_cast<pass_interface::IPassInterfaceNotic&>(*controller);
  auto& ws = Notices();
  fakes::Recorder::Get().Mute(true);
  const auto often = [](auto round) {
    return [round] {
      for (int i = 0; i < 300; ++i) round(i);
    };
  };
  {
    Worker owner(often([&](int i) {
      Init();
      controller->GetPhoneConnect();
      controller->SendInReq17(i);
      controller->ReleasePhoneConnect();
    }));
    Worker service(often([&](int i) {
      auto info = std::make_shared<InstanceInfo>(MakeInfo("session-" + std::to_string(i)));
      info->code = i % 5 == 4 ? 1 : 0;
      pass.OnPhoneConnectRsp(i % 7 == 6 ? 1 : 0, 200, info);
      auto renewed = std::make_shared<pass_interface::RefreshSessionRsp>();
      renewed->code = i % 11 == 10 ? 1 : 0;
      renewed->sessionId = info->sessionId;
      pass.OnRefreshSessionRsp(0, 200, renewed);
    }));
    Worker webSocket(often([&](int i) {
      ws.OnConnectState(static_cast<std::uint32_t>(i % 3));
      ws.OnConnectStep(0);
      ws.OnAuthRsp(0, 0, 0, "264");
      ws.OnPlayRsp(1, 2, 3, 4, 5, 6, 7, 8, 9, 10);
      ws.OnFirstFrame(1, 2, 3, 4);
      ws.OnVideoParamRsp(0, 1, static_cast<std::uint16_t>(i), 3, 400, 500);
      ws.OnErrorCode(i % 2 ? 60103013 : 5, "x");
      ws.OnNotice6("x");
    }));
    Worker frontEndThread(often([&](int i) {
      controller->ChangeIsp(static_cast<std::uint32_t>(i % 3));
      controller->SendInReq8("x");
      controller->SendInMicParamReq(1, 2, 3);
      Internal().SetSdkVersion("2");
      Internal().SendMessageCollect(1, 2, 3, "", "");
    }));
  }
  fakes::Recorder::Get().Mute(false);
  ReleaseAndForget();
  EXPECT_EQ(Services().LiveConnections(), 0);
  EXPECT_THAT(Services().liveRows, IsEmpty());
}

}  // namespace
}  // namespace library_test
