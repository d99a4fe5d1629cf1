// What the cloud can do to a connection that stands: what the front end is told, and that the connection goes on.
#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

using qv_cloud::CloudStats;
using qv_cloud::Faults;
using qv_cloud::HttpAnswer;

struct Faulty : EndToEnd {};

TEST_F(Faulty, AnExpiredSessionIsRenewedAndTheFramesGoOn) {
  StartCloud(Faults{.errorCode = qv_cloud::kSessionExpired, .errorAfterFrames = 5});
  ASSERT_TRUE(ConnectToFirstFrame());
  ASSERT_TRUE(CloudSees([](const CloudStats& stats) { return stats.renewals == 1 && stats.framesSent > 15; }));
  EXPECT_EQ(Stats().refreshes, 1U);
  EXPECT_EQ(frontEnd->notices.Count("OnStatus"), 2U) << "connecting and success only";
  EXPECT_EQ(frontEnd->States(), "CS");
}

TEST_F(Faulty, ARefreshThatFailsIsReportedAndOnlyARefusalEndsTheConnection) {
  const struct {
    Faults faults;
    const char* told;
    const char* logged;
  } rows[] = {{Faults{.refuseRefresh = 60301007}, "OnStatus(60301007, refresh refused)",
               "OnRefreshSessionRsp get http code [60301007]"},
              {Faults{.httpStatus = 503}, "OnStatus(60702004, Http Req for refresh-session can not get 200)",
               "OnRefreshSessionRsp get http code [503]"},
              {Faults{.httpAnswer = HttpAnswer::closed}, "OnStatus(60702003, Http Req for refresh-session failed)",
               "OnRefreshSessionRsp failed"}};
  StartCloud();
  for (const auto& [rowFaults, told, logged] : rows) {
    SCOPED_TRACE(told);
    ASSERT_TRUE(ConnectToFirstFrame());
    Faults faults = rowFaults;
    faults.errorCode = qv_cloud::kSessionExpired;
    cloud->SetFaults(faults);
    ASSERT_TRUE(frontEnd->notices.WaitFor(told));
    EXPECT_EQ(frontEnd->notices.Count("OnStatus(6"), 2U) << "connecting, and this";
    EXPECT_EQ(frontEnd->States(), "CS");
    const bool isRefused = faults.refuseRefresh != 0;
    EXPECT_TRUE(CloudHasConnections(isRefused ? 0 : 1));
    EXPECT_EQ(controller->SendInReq4(1, 2), isRefused ? -1 : 0);
    EXPECT_NE(Log().find(logged), std::string::npos);
    controller->ReleasePhoneConnect();
    cloud->SetFaults({});
  }
}

TEST_F(Faulty, AServiceCodeGoesToItsOwnNotice) {
  StartCloud(Faults{.errorCode = 60102029, .errorAfterFrames = 5});
  ASSERT_TRUE(ConnectToFirstFrame());
  EXPECT_TRUE(frontEnd->notices.WaitFor("OnServiceCode(60102029, reported by the cloud)"));
  cloud->SetFaults(Faults{.errorCode = 60102030, .errorAfterFrames = 5});
  EXPECT_TRUE(frontEnd->notices.WaitFor("OnStatus(60102030, reported by the cloud)"));
  EXPECT_EQ(frontEnd->notices.Count("OnStatus(60102029"), 0U);
  EXPECT_EQ(frontEnd->States(), "CS");
}

TEST_F(Faulty, APeerThatDoesNotReadMakesCommandsFailInsteadOfWaiting) {
  StartCloud(Faults{.stopReading = true});
  ASSERT_TRUE(ConnectToFirstFrame());
  const std::string text(4000, 'x');
  std::int32_t result = 0;
  for (int sent = 0; result == 0 && sent < 100000; ++sent) result = controller->SendInReq9(text.c_str());
  EXPECT_LT(result, -1) << "a code of the connection's own";
  EXPECT_EQ(frontEnd->States(), "CS");
  EXPECT_TRUE(ReleaseIsPrompt());
  cloud->SetFaults({});
  EXPECT_TRUE(ConnectToFirstFrame());
}

}  // namespace
}  // namespace end_to_end
