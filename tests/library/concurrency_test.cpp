// The three kinds of thread against each other. Whatever the order: no connection object is left behind, none is
// destroyed twice, and no collector row stays.
#include "tests/library/fakes/threads.h"
#include "tests/library/library_test.h"

namespace library_test {
namespace {

using fakes::Pause;
using fakes::Worker;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

struct Concurrency : LibraryTest {
  void ReleaseAndExpectNothingLeft() {
    controller->ReleasePhoneConnect();
    EXPECT_EQ(Services().LiveConnections(), 0);
    EXPECT_THAT(Services().liveRows, IsEmpty());
    Services().sessionCache.clear();
  }
};

TEST_F(Concurrency, OfTwoConnectsAtOnceOneIsRefused) {
  InitReady();
  for (const char* where : {"db.LoadSessionCache", "pass.RequestPhoneConnect"}) {
    Pause pause(where);
    std::int32_t first = -2;
    Worker worker([&] { first = controller->GetPhoneConnect(); });
    pause.WaitUntilReached();
    EXPECT_EQ(controller->GetPhoneConnect(), -1);
    pause.Resume();
    worker.Finish();
    EXPECT_EQ(first, 0);
    EXPECT_THAT(Take(), Contains(StartsWith("pass.RequestPhoneConnect")).Times(1));
    controller->ReleasePhoneConnect();
    InitReady();
  }
}

TEST_F(Concurrency, AnAnswerThatRacesAReleaseLeavesNothingBehind) {
  for (const char* where : {"log0 [TimeConsumingFlag][phone-1] HandlePhoneConnect", "wsManager.CreateWS",
                            "collect.InsertInstanceInfo", "cipher.Encrypt"}) {
    InitReady();
    ConnectMiss();
    Pause pause(where);
    Worker worker([&] { Grant(); });
    pause.WaitUntilReached();
    controller->ReleasePhoneConnect();
    Take();
    pause.Resume();
    worker.Finish();
    const Calls calls = Take();
    EXPECT_THAT(calls, Not(Contains(StartsWith("notice.OnStatus")))) << where;
    EXPECT_THAT(calls, Not(Contains(testing::HasSubstr("Init WS failed")))) << where;
    ReleaseAndExpectNothingLeft();
  }
}

TEST_F(Concurrency, AnAnswerOfTheConnectBeforeDoesNotDisturbTheNext) {
  for (const char* where : {"wsManager.CreateWS", "collect.InsertInstanceInfo"}) {
    InitReady();
    ConnectMiss();
    Pause pause(where);
    Worker worker([&] { Grant(); });
    pause.WaitUntilReached();
    controller->ReleasePhoneConnect();
    InitReady();
    ConnectMiss();
    Grant();
    pause.Resume();
    worker.Finish();
    EXPECT_EQ(Services().LiveConnections(), 1) << where;
    EXPECT_EQ(Services().liveRows.size(), 1U) << where;
    EXPECT_EQ(controller->SendInReq17(1), 0) << where;
    ReleaseAndExpectNothingLeft();
  }
}

TEST_F(Concurrency, AnAnswerGrantedInTheMidstOfAReleaseLeavesNothingBehind) {
  for (const char* where :
       {"collect.Report(1, 4", "wsManager.DestroyWS", "wsManager.Stop", "pass.Stop", "collect.DeleteInstanceInfo"}) {
    Connect();
    At(where, [&] { Grant(); });
    ReleaseAndExpectNothingLeft();
    const std::size_t made = Services().connections.size();
    Connect();
    EXPECT_GT(Services().connections.size(), made) << "the next connection finds no remains of " << where;
    ReleaseAndExpectNothingLeft();
  }
}

TEST_F(Concurrency, ASessionIsNotCachedForThePhoneThatTheFrontEndTurnsToInItsNotice) {
  InitReady();
  ConnectMiss();
  targetId = "phone-2";
  At("notice.OnIspList", [&] {
    controller->ReleasePhoneConnect();
    EXPECT_EQ(Init(), 0);
  });
  Grant();
  EXPECT_THAT(Services().liveRows, IsEmpty());
  Take();
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  EXPECT_THAT(Take(), Contains(StartsWith("pass.RequestPhoneConnect(phone-2")));
}

TEST_F(Concurrency, TwoAnswersAtOnceGiveOneConnectionAndOneRow) {
  for (const char* where : {"wsManager.CreateWS", "collect.InsertInstanceInfo"}) {
    InitReady();
    ConnectMiss();
    Pause pause(where);
    Worker worker([&] { Grant(MakeInfo("session-a")); });
    pause.WaitUntilReached();
    Worker other([&] { Grant(MakeInfo("session-b")); });
    other.Finish();
    EXPECT_EQ(controller->SendInReq17(1), 0) << "an answer waits for no other, " << where;
    pause.Resume();
    worker.Finish();
    EXPECT_EQ(Services().LiveConnections(), 1) << where;
    EXPECT_EQ(Services().liveRows.size(), 1U) << where;
    EXPECT_EQ(controller->SendInReq17(1), 0) << where;
    ReleaseAndExpectNothingLeft();
  }
}

TEST_F(Concurrency, AReleaseThatRacesAChangeOfTheLineLeavesNothingBehind) {
  for (const char* where : {"log20 Change Isp", "wsManager.DestroyWS", "wsManager.CreateWS"}) {
    Connect();
    Pause pause(where);
    Worker worker([&] { controller->ChangeIsp(1); });
    pause.WaitUntilReached();
    controller->ReleasePhoneConnect();
    pause.Resume();
    worker.Finish();
    ReleaseAndExpectNothingLeft();
    controller = qv_data_interface::IQVDataInterface::Create();
  }
}

TEST_F(Concurrency, AChangeOfTheLineFromInsideItsOwnRebuildIsRefused) {
  Connect();
  for (const char* where : {"wsManager.DestroyWS", "wsManager.CreateWS", "log20"}) {
    std::int32_t inside = 0;
    std::int32_t outside = -2;
    At(where, [&] { inside = controller->ChangeIsp(2); });
    Worker worker([&] { outside = controller->ChangeIsp(1); });
    worker.Finish();
    EXPECT_EQ(inside, -1) << where;
    EXPECT_EQ(outside, 0) << where;
    EXPECT_EQ(controller->ChangeIsp(qv_data_interface::kIspCodeDefault), 0);
  }
  EXPECT_EQ(Services().LiveConnections(), 1);
}

TEST_F(Concurrency, AChangeOfTheLineFromANoticeIsRefusedWhileAnotherIsAtWork) {
  Connect();
  const auto sink = WsSink();
  Pause pause("wsManager.CreateWS");
  Worker worker([&] { controller->ChangeIsp(1); });
  pause.WaitUntilReached();
  std::int32_t inside = 0;
  At("notice.OnNotice7", [&] { inside = controller->ChangeIsp(2); });
  Worker notifier([&] { sink->OnNotice5(); });
  notifier.Finish();
  EXPECT_EQ(inside, -1);
  pause.Resume();
  worker.Finish();
  At("notice.OnNotice7", [&] { inside = controller->ChangeIsp(2); });
  sink->OnNotice5();
  EXPECT_EQ(inside, 0) << "alone, it may";
}

TEST_F(Concurrency, ChangesOfTheLineOfTwoThreadsWaitForEachOther) {
  Connect();
  Pause pause("wsManager.CreateWS");
  Worker first([&] { EXPECT_EQ(controller->ChangeIsp(1), 0); });
  pause.WaitUntilReached();
  Worker second([&] { EXPECT_EQ(controller->ChangeIsp(2), 0); });
  pause.Resume();
  first.Finish();
  second.Finish();
  EXPECT_EQ(LastConnection().url, "wss://10.2.0.1:82");
  EXPECT_EQ(Services().LiveConnections(), 1);
}

TEST_F(Concurrency, AnAnswerIsNotHeldUpByAChangeOfTheLine) {
  Connect();
  Pause pause("wsManager.DestroyWS");
  Worker worker([&] { controller->ChangeIsp(1); });
  pause.WaitUntilReached();
  Worker answer([&] { Grant(MakeInfo("session-2")); });
  answer.Finish();
  pause.Resume();
  worker.Finish();
  EXPECT_EQ(Services().LiveConnections(), 1);
  EXPECT_EQ(Gathered().sessionId, "session-2");
}

TEST_F(Concurrency, AConnectionOutlivesItsReleaseForTheCommandInFlight) {
  Connect();
  Pause pause("ws.SendReq7");
  Services().commandResult = 33;
  std::int32_t result = 0;
  Worker worker([&] { result = controller->SendInReq8("text"); });
  pause.WaitUntilReached();
  controller->ReleasePhoneConnect();
  pause.Resume();
  worker.Finish();
  EXPECT_EQ(result, 33);
}

TEST_F(Concurrency, EveryThreadAgainstEveryOther) {
  // The controller itself serves as the sinks, so that notices come at every moment, after a release too.
  auto& pass = dynamic_cast<pass_interface::IPassInterfaceNotic&>(*controller);
  auto& ws = Notices();
  fakes::Recorder::Get().Mute(true);
  constexpr int kRounds = 300;
  {
    Worker owner([&] {
      for (int i = 0; i < kRounds; ++i) {
        Init();
        controller->GetPhoneConnect();
        controller->SendInReq17(i);
        controller->ReleasePhoneConnect();
      }
    });
    Worker service([&] {
      for (int i = 0; i < kRounds; ++i) {
        auto info = std::make_shared<InstanceInfo>(MakeInfo("session-" + std::to_string(i)));
        info->code = i % 5 == 4 ? 1 : 0;
        pass.OnPhoneConnectRsp(i % 7 == 6 ? 1 : 0, 200, info);
        auto renewed = std::make_shared<pass_interface::RefreshSessionRsp>();
        renewed->code = i % 11 == 10 ? 1 : 0;
        renewed->sessionId = info->sessionId;
        pass.OnRefreshSessionRsp(0, 200, renewed);
      }
    });
    Worker webSocket([&] {
      for (int i = 0; i < kRounds; ++i) {
        ws.OnConnectState(static_cast<std::uint32_t>(i % 3));
        ws.OnConnectStep(0);
        ws.OnAuthRsp(0, 0, 0, "264");
        ws.OnPlayRsp(1, 2, 3, 4, 5, 6, 7, 8, 9, 10);
        ws.OnFirstFrame(1, 2, 3, 4);
        ws.OnVideoParamRsp(0, 1, static_cast<std::uint16_t>(i), 3, 400, 500);
        ws.OnErrorCode(i % 2 ? 60103013 : 5, "x");
        ws.OnNotice6("x");
      }
    });
    Worker frontEndThread([&] {
      for (int i = 0; i < kRounds; ++i) {
        controller->ChangeIsp(static_cast<std::uint32_t>(i % 3));
        controller->SendInReq8("x");
        controller->SendInMicParamReq(1, 2, 3);
        Internal().SetSdkVersion("2");
        Internal().SendMessageCollect(1, 2, 3, "", "");
      }
    });
  }
  fakes::Recorder::Get().Mute(false);
  ReleaseAndExpectNothingLeft();
}

}  // namespace
}  // namespace library_test
