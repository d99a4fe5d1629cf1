// Release: its order, its silence afterwards, and release from inside a call or a notice.
#include "tests/library/library_test.h"

namespace library_test {
namespace {

const Calls kRelease = {"collect.Report(1, 4, , , )", "wsManager.DestroyWS(1)", "wsManager.Stop()", "pass.Stop()",
                        "collect.DeleteInstanceInfo(7)"};

struct Release : LibraryTest {};

TEST_F(Release, EndsEverythingInOrderOnce) {
  Connect();
  controller->ReleasePhoneConnect();
  EXPECT_EQ(Take(), kRelease);
  EXPECT_THAT(LastStatus().releaseTime, IsNow());
  EXPECT_EQ(frontEnd.use_count(), 1) << "the notice is let go";
  controller->ReleasePhoneConnect();
  controller.reset();
  EXPECT_THAT(Take(), IsEmpty());
  EXPECT_EQ(Services().sessionCache.size(), 1U) << "the cached session stays";
}

TEST_F(Release, OfAControllerThatNeverConnectedStopsTheServices) {
  InitReady();
  controller->ReleasePhoneConnect();
  EXPECT_THAT(Take(), ElementsAre("collect.Report(1, 4, , , )", "wsManager.Stop()", "pass.Stop()"));
}

TEST_F(Release, AFailingDeletionIsLoggedAndTheRowForgotten) {
  Connect();
  Services().deleteResult = -1;
  controller->ReleasePhoneConnect();
  EXPECT_EQ(Take().back(), "log60 DeleteInstanceInfo failed");
  InitReady();
  controller->ReleasePhoneConnect();
  EXPECT_THAT(Take(), Not(Contains(StartsWith("collect.DeleteInstanceInfo"))));
}

TEST_F(Release, WithoutACollectorNothingIsSentOrDeleted) {
  Connect();
  Services().collectorMissing = true;
  controller->ReleasePhoneConnect();
  EXPECT_THAT(Take(), ElementsAre("wsManager.DestroyWS(1)", "wsManager.Stop()", "pass.Stop()"));
}

TEST_F(Release, CommandsAreRefusedFromItsFirstStepOn) {
  Connect();
  std::int32_t command = 0;
  std::int32_t connect = 0;
  At("collect.Report(1, 4", [&] {
    command = controller->SendInReq17(1);
    connect = controller->GetPhoneConnect();
    controller->ReleasePhoneConnect();
  });
  controller->ReleasePhoneConnect();
  EXPECT_EQ(command, -1);
  EXPECT_EQ(connect, -1);
  EXPECT_EQ(Take(), kRelease) << "a release inside the release does nothing";
}

TEST_F(Release, InitMayFollowWithNewServicesAndANewRow) {
  Connect();
  controller->ReleasePhoneConnect();
  Take();
  EXPECT_EQ(Init(), 0);
  EXPECT_THAT(Take(), testing::IsSupersetOf({"pass.Create()", "wsManager.Create()"}));
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  EXPECT_THAT(Take(), Contains(StartsWith("collect.InsertInstanceInfo")));
  EXPECT_EQ(Services().LiveConnections(), 1);
}

// Every notice of the services that makes the controller tell its front end or the collector something.
const struct {
  const char* notice;
  void (*cause)(Release&, IWSInterfaceNotic&);
} kNotices[] = {
    {"notice.OnStatus", [](auto&, auto& s) { s.OnConnectState(2); }},
    {"notice.OnStatus", [](auto&, auto& s) { s.OnConnectState(1); }},
    {"notice.OnStatus", [](auto&, auto& s) { s.OnConnectState(0); }},
    {"notice.OnStatus", [](auto&, auto& s) { s.OnErrorCode(1, "x"); }},
    {"notice.OnStatus", [](auto& t, auto&) { t.Answer(1, 0, MakeInfo()); }},
    {"notice.OnStatus", [](auto& t, auto&) { t.Answer(0, 200, InstanceInfo()); }},
    {"notice.OnServiceCode", [](auto&, auto& s) { s.OnErrorCode(60102029, "x"); }},
    {"notice.OnChooseVideoFormat", [](auto&, auto& s) { s.OnAuthRsp(1, 2, 3, "264"); }},
    {"notice.OnPlayRsp", [](auto&, auto& s) { s.OnPlayRsp(1, 2, 3, 4, 5, 6, 7, 8, 9, 10); }},
    {"notice.OnFirstFrame", [](auto&, auto& s) { s.OnFirstFrame(1, 2, 3, 4); }},
    {"notice.OnNotice8", [](auto&, auto& s) { s.OnNotice6("x"); }},
    {"notice.OnVideoParamRsp", [](auto&, auto& s) { s.OnVideoParamRsp(0, 1, 30, 3, 400, 500); }},
    {"notice.OnIspList", [](auto& t, auto&) { t.Grant(); }},
    {"collect.Report", [](auto&, auto& s) { s.OnConnectState(2); }},
};

TEST_F(Release, ANoticeThatComesLateReachesNoFrontEndAndLeavesNothingBehind) {
  Connect();
  const auto sink = WsSink();
  ReleaseAndForget();
  for (const auto& each : kNotices) each.cause(*this, *sink);
  for (const std::string& call : Take())
    EXPECT_FALSE(call.rfind("notice.", 0) == 0 || call.rfind("ws", 0) == 0) << call;
  EXPECT_EQ(Services().LiveConnections(), 0);
  EXPECT_THAT(Services().liveRows, IsEmpty());
  InitReady();
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  EXPECT_EQ(Services().LiveConnections(), 1) << "the next connection finds no remains";
}

// Only the release's own calls, telemetry aside, may follow a notice from which the controller was released.
TEST_F(Release, FromInsideANoticeEndsEverythingOnce) {
  for (const bool byDropping : {false, true}) {
    for (const auto& [notice, cause] : kNotices) {
      SCOPED_TRACE(notice);
      StartOver();
      Connect();
      At(notice, [&] { byDropping ? controller.reset() : controller->ReleasePhoneConnect(); });
      auto sink = WsSink();
      std::weak_ptr<IWSInterfaceNotic> alive = sink;
      cause(*this, *sink);
      sink.reset();
      EXPECT_EQ(alive.expired(), byDropping);
      const Calls calls = Take();
      EXPECT_THAT(calls, Contains("wsManager.Stop()").Times(1));
      EXPECT_THAT(calls, Contains("pass.Stop()").Times(1));
      EXPECT_EQ(Services().connections.size(), 1U);
      EXPECT_EQ(Services().LiveConnections(), 0);
      EXPECT_THAT(Services().liveRows, IsEmpty());
    }
  }
}

}  // namespace
}  // namespace library_test
