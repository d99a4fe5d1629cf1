// The three kinds of thread against each other. Whatever the order: no connection object is left behind, none is
// destroyed twice, and no collector row stays.
#include "tests/library/fakes/threads.h"
#include "tests/library/library_test.h"

namespace library_test {
namespace {

using fakes::Pause;
using fakes::Worker;
using testing::HasSubstr;

struct Concurrency : LibraryTest {
  // Holds the work, on a thread of its own, at a call while this thread does something else.
  template <class Work, class Meanwhile>
  static void HoldAt(const char* where, Work work, Meanwhile meanwhile) {
    Pause pause(where);
    Worker worker(work);
    pause.WaitUntilReached();
    meanwhile();
    pause.Resume();
    worker.Finish();
  }
  void ReleaseAndExpectNothingLeft() {
    ReleaseAndForget();
    EXPECT_EQ(Services().LiveConnections(), 0);
    EXPECT_THAT(Services().liveRows, IsEmpty());
  }
  void ExpectOneConnectionAndRow() {
    EXPECT_EQ(Services().LiveConnections(), 1);
    EXPECT_EQ(Services().liveRows.size(), 1U);
    EXPECT_TRUE(CommandsAreOpen());
  }
};

TEST_F(Concurrency, OfTwoConnectsAtOnceOneIsRefused) {
  for (const char* where : {"db.LoadSessionCache", "pass.RequestPhoneConnect"}) {
    InitReady();
    std::int32_t first = -2;
    HoldAt(
        where, [&] { first = controller->GetPhoneConnect(); }, [&] { EXPECT_EQ(controller->GetPhoneConnect(), -1); });
    EXPECT_EQ(first, 0);
    EXPECT_THAT(Take(), Contains(StartsWith("pass.RequestPhoneConnect")).Times(1));
    controller->ReleasePhoneConnect();
  }
}

TEST_F(Concurrency, AnAnswerThatRacesAReleaseLeavesNothingBehindAndDoesNotDisturbTheNextConnect) {
  for (const char* where : {"log0 [TimeConsumingFlag][phone-1] HandlePhoneConnect", "wsManager.CreateWS",
                            "collect.InsertInstanceInfo", "cipher.Encrypt"}) {
    for (const bool connectsAnew : {false, true}) {
      SCOPED_TRACE(where);
      Request();
      HoldAt(
          where, [&] { Grant(); },
          [&] {
            controller->ReleasePhoneConnect();
            if (connectsAnew) Connect();
            Take();
          });
      EXPECT_THAT(Take(), Not(Contains(testing::AnyOf(StartsWith("notice.OnStatus"), HasSubstr("Init WS failed")))));
      if (connectsAnew) ExpectOneConnectionAndRow();
      ReleaseAndExpectNothingLeft();
    }
  }
}

TEST_F(Concurrency, AnAnswerGrantedInTheMidstOfAReleaseLeavesNothingBehind) {
  for (const char* where :
       {"collect.Report(1, 4", "wsManager.DestroyWS", "wsManager.Stop", "pass.Stop", "collect.DeleteInstanceInfo"}) {
    SCOPED_TRACE(where);
    Connect();
    At(where, [&] { Grant(); });
    ReleaseAndExpectNothingLeft();
    const std::size_t made = Services().connections.size();
    Connect();
    EXPECT_GT(Services().connections.size(), made) << "the next connection finds no remains";
    ReleaseAndExpectNothingLeft();
  }
}

TEST_F(Concurrency, ASessionIsNotCachedForThePhoneThatTheFrontEndTurnsToInItsNotice) {
  Request();
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

TEST_F(Concurrency, TheFrontEndMayReleaseAndConnectAnewInsideTheNoticeOfACachedConnect) {
  Connect();
  controller->ReleasePhoneConnect();
  InitReady();
  std::int32_t inside = -2;
  At("notice.OnIspList", [&] {
    controller->ReleasePhoneConnect();
    EXPECT_EQ(Init(), 0);
    inside = controller->GetPhoneConnect();
  });
  EXPECT_EQ(controller->GetPhoneConnect(), -1) << "this one has been overtaken";
  EXPECT_EQ(inside, 0);
  ExpectOneConnectionAndRow();
  ReleaseAndExpectNothingLeft();
}

TEST_F(Concurrency, TheLastPointerMayBeDroppedInsideANoticeOnTheFrontEndsOwnThread) {
  Connect();
  controller->ReleasePhoneConnect();
  InitReady();
  const std::weak_ptr<IQVDataInterface> watched = controller;
  At("notice.OnIspList", [&] {
    controller.reset();
    EXPECT_FALSE(watched.expired()) << "it lives until its own call has ended";
  });
  controller.get()->GetPhoneConnect();
  EXPECT_TRUE(watched.expired());
  EXPECT_EQ(Services().LiveConnections(), 0);
}

TEST_F(Concurrency, BeforeTheAnswerNoLineOfTheLastPhoneIsTaken) {
  Connect();
  EXPECT_EQ(controller->ChangeIsp(2), 0);
  ReleaseAndForget();
  targetId = "phone-2";
  Request();
  for (const std::uint32_t line : {1U, 65536U}) EXPECT_EQ(controller->ChangeIsp(line), -1);
  EXPECT_EQ(Services().LiveConnections(), 0) << "the answer's own connection finds the place free";
  Grant();
  EXPECT_EQ(controller->ChangeIsp(1), 0);
  ReleaseAndExpectNothingLeft();
}

TEST_F(Concurrency, TwoAnswersAtOnceGiveOneConnectionAndOneRow) {
  for (const char* where : {"wsManager.CreateWS", "collect.InsertInstanceInfo"}) {
    SCOPED_TRACE(where);
    Request();
    HoldAt(
        where, [&] { Grant(MakeInfo("session-a")); },
        [&] {
          Worker([&] { Grant(MakeInfo("session-b")); }).Finish();
          EXPECT_TRUE(CommandsAreOpen()) << "an answer waits for no other";
        });
    ExpectOneConnectionAndRow();
    ReleaseAndExpectNothingLeft();
  }
}

TEST_F(Concurrency, AReleaseThatRacesAChangeOfTheLineLeavesNothingBehind) {
  for (const char* where : {"log20 Change Isp", "wsManager.DestroyWS", "wsManager.CreateWS"}) {
    StartOver();
    Connect();
    HoldAt(
        where, [&] { controller->ChangeIsp(1); }, [&] { controller->ReleasePhoneConnect(); });
    ReleaseAndExpectNothingLeft();
  }
}

TEST_F(Concurrency, AChangeOfTheLineFromInsideItsOwnRebuildIsRefused) {
  for (const char* where : {"wsManager.DestroyWS", "wsManager.CreateWS", "log20"}) {
    SCOPED_TRACE(where);
    StartOver();
    Connect();
    std::int32_t inside = 0;
    At(where, [&] { inside = controller->ChangeIsp(2); });
    Worker([&] { EXPECT_EQ(controller->ChangeIsp(1), 0); }).Finish();
    EXPECT_EQ(inside, -1);
    ExpectOneConnectionAndRow();
  }
}

TEST_F(Concurrency, AChangeOfTheLineFromANoticeIsRefusedWhileAnotherIsAtWork) {
  Connect();
  const auto sink = WsSink();
  std::int32_t inside = 0;
  const auto notify = [&] {
    At("notice.OnNotice7", [&] { inside = controller->ChangeIsp(2); });
    Worker([&] { sink->OnNotice5(); }).Finish();
  };
  HoldAt(
      "wsManager.CreateWS", [&] { controller->ChangeIsp(1); }, notify);
  EXPECT_EQ(inside, -1);
  notify();
  EXPECT_EQ(inside, 0) << "alone, it may";
}

TEST_F(Concurrency, ChangesOfTheLineOfTwoThreadsWaitForEachOther) {
  Connect();
  const auto changeOften = [&] {
    for (std::uint32_t i = 0; i < 300; ++i) EXPECT_EQ(controller->ChangeIsp(1 + i % 2), 0);
  };
  Worker first(changeOften);
  Worker second(changeOften);
  first.Finish();
  second.Finish();
  ExpectOneConnectionAndRow();
}

TEST_F(Concurrency, AnAnswerIsNotHeldUpByAChangeOfTheLine) {
  Connect();
  HoldAt(
      "wsManager.DestroyWS", [&] { controller->ChangeIsp(1); },
      [&] { Worker([&] { Grant(MakeInfo("session-2")); }).Finish(); });
  ExpectOneConnectionAndRow();
  EXPECT_EQ(Gathered().sessionId, "session-2");
}

TEST_F(Concurrency, AConnectionOutlivesItsReleaseForTheCommandInFlight) {
  Connect();
  Services().commandResult = 33;
  std::int32_t result = 0;
  HoldAt(
      "ws.SendReq7", [&] { result = controller->SendInReq8("text"); },
      [&] {
        controller->ReleasePhoneConnect();
        EXPECT_FALSE(LastConnection().object.expired());
      });
  EXPECT_TRUE(LastConnection().object.expired());
  EXPECT_EQ(result, 33);
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
  ReleaseAndExpectNothingLeft();
}

}  // namespace
}  // namespace library_test
