// Release: its order, its silence afterwards, and release from inside a call or a notice.
#include "tests/library/library_test.h"

namespace library_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const Calls kRelease = {"collect.Report(1, 4, , , )", "wsManager.DestroyWS(1)", "wsManager.Stop()", "pass.Stop()",
                        "collect.DeleteInstanceInfo(7)"};

struct Release : LibraryTest {};

TEST_F(Release, EndsEverythingInOrderOnce) {
  Connect();
  controller->ReleasePhoneConnect();
  EXPECT_EQ(Take(), kRelease);
  EXPECT_NEAR(double(LastStatus().releaseTime), double(Now()), 60000);
  controller->ReleasePhoneConnect();
  controller.reset();
  EXPECT_THAT(Take(), IsEmpty());
  EXPECT_EQ(Services().sessionCache.size(), 1U) << "the cached session stays";
}

TEST_F(Release, DroppingTheLastPointerReleases) {
  Connect();
  controller.reset();
  EXPECT_EQ(Take(), kRelease);
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
  frontEnd = std::make_shared<fakes::FrontEnd>();
  EXPECT_EQ(Init(), 0);
  const Calls calls = Take();
  EXPECT_THAT(calls, Contains("pass.Create()"));
  EXPECT_THAT(calls, Contains("wsManager.Create()"));
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  EXPECT_THAT(Take(), Contains(StartsWith("collect.InsertInstanceInfo")));
  EXPECT_EQ(Services().LiveConnections(), 1);
}

TEST_F(Release, TheNoticeIsLetGo) {
  Connect();
  controller->ReleasePhoneConnect();
  EXPECT_EQ(frontEnd.use_count(), 1);
}

TEST_F(Release, ANoticeThatComesLateReachesNoFrontEnd) {
  Connect();
  const auto passSink = PassSink();
  const auto wsSink = WsSink();
  controller->ReleasePhoneConnect();
  Take();
  wsSink->OnConnectState(0);
  wsSink->OnErrorCode(1, "late");
  wsSink->OnFirstFrame(1, 2, 3, 4);
  wsSink->OnNotice6("late");
  passSink->OnPhoneConnectRsp(1, 0, nullptr);
  for (const std::string& call : Take())
    EXPECT_THAT(call, Not(testing::AnyOf(StartsWith("notice."), StartsWith("ws"))));
}

TEST_F(Release, AGrantedAnswerThatComesLateLeavesNothingBehind) {
  InitReady();
  ConnectMiss();
  const auto passSink = PassSink();
  controller->ReleasePhoneConnect();
  Take();
  passSink->OnPhoneConnectRsp(0, 200, std::make_shared<InstanceInfo>(MakeInfo()));
  EXPECT_THAT(Take(), Not(Contains(StartsWith("notice."))));
  EXPECT_EQ(Services().LiveConnections(), 0);
  EXPECT_THAT(Services().liveRows, IsEmpty());
  InitReady();
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  EXPECT_EQ(Services().LiveConnections(), 1) << "the next connection finds no remains";
}

struct NoticeCase {
  const char* notice;
  void (*cause)(Release&, IWSInterfaceNotic&);
};

const NoticeCase kNotices[] = {
    {"notice.OnStatus", [](auto&, auto& s) { s.OnConnectState(2); }},
    {"notice.OnStatus", [](auto&, auto& s) { s.OnConnectState(1); }},
    {"notice.OnStatus", [](auto&, auto& s) { s.OnConnectState(0); }},
    {"notice.OnStatus", [](auto&, auto& s) { s.OnErrorCode(1, "x"); }},
    {"notice.OnStatus", [](auto& t, auto&) { t.Answer(1, 0, MakeInfo()); }},
    {"notice.OnStatus",
     [](auto& t, auto&) {
       InstanceInfo refused = MakeInfo();
       refused.code = 5;
       t.Answer(0, 200, refused);
     }},
    {"notice.OnServiceCode", [](auto&, auto& s) { s.OnErrorCode(60102029, "x"); }},
    {"notice.OnChooseVideoFormat", [](auto&, auto& s) { s.OnAuthRsp(1, 2, 3, "264"); }},
    {"notice.OnPlayRsp", [](auto&, auto& s) { s.OnPlayRsp(1, 2, 3, 4, 5, 6, 7, 8, 9, 10); }},
    {"notice.OnFirstFrame", [](auto&, auto& s) { s.OnFirstFrame(1, 2, 3, 4); }},
    {"notice.OnNotice8", [](auto&, auto& s) { s.OnNotice6("x"); }},
    {"notice.OnVideoParamRsp", [](auto&, auto& s) { s.OnVideoParamRsp(0, 1, 30, 3, 400, 500); }},
    {"notice.OnIspList", [](auto& t, auto&) { t.Grant(); }},
    {"collect.Report", [](auto&, auto& s) { s.OnConnectState(2); }},
};

// Only the release's own calls, telemetry aside, may follow a notice from which the controller was released.
TEST_F(Release, FromInsideANoticeEndsEverythingOnce) {
  for (const bool byDropping : {false, true}) {
    for (const auto& [notice, cause] : kNotices) {
      fakes::Recorder::Get().Reset();
      fakes::ResetServices();
      controller = qv_data_interface::IQVDataInterface::Create();
      Connect();
      At(notice, [&] { byDropping ? controller.reset() : controller->ReleasePhoneConnect(); });
      auto sink = WsSink();
      std::weak_ptr<IWSInterfaceNotic> alive = sink;
      cause(*this, *sink);
      sink.reset();
      EXPECT_EQ(alive.expired(), byDropping) << notice;
      const Calls calls = Take();
      EXPECT_THAT(calls, Contains("wsManager.Stop()").Times(1)) << notice;
      EXPECT_THAT(calls, Contains("pass.Stop()").Times(1)) << notice;
      EXPECT_EQ(Services().connections[0].timesDestroyed, 1) << notice;
      EXPECT_EQ(Services().connections.size(), 1U) << notice;
      EXPECT_THAT(Services().liveRows, IsEmpty()) << notice;
    }
  }
}

}  // namespace
}  // namespace library_test
