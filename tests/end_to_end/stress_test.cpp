// Everything at once on one controller; meant for the sanitizers.
#include <thread>

#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

constexpr int kRounds = 20;
constexpr int kCommandsARound = 200;

struct Stress : EndToEnd {
  void SendCommands() {
    for (int i = 0; i < kCommandsARound; ++i) {
      controller->SendInReq4(1, 2);
      controller->SendInReq8("text");
      controller->SendInReq15(60, 0);
      controller->SendInMicParamReq(1, 48000, 2);
    }
  }
  void SwitchLines() {
    for (const std::uint32_t line : {qv_cloud::kLineA, qv_cloud::kLineB, 99U, qv_cloud::kDefaultLine}) {
      controller->ChangeIsp(line);
    }
  }
};

TEST_F(Stress, CommandsLineSwitchesAndReconnectsSideBySideLeaveNothingBehind) {
  qv_cloud::Faults faults;
  faults.errorCode = qv_cloud::kSessionExpired;
  StartCloud();
  for (int round = 0; round < kRounds; ++round) {
    std::thread workers[] = {std::thread([this] { SendCommands(); }), std::thread([this] { SendCommands(); }),
                             std::thread([this] { SwitchLines(); }), std::thread([this] { SwitchLines(); }),
                             std::thread([this] { controller->ReleasePhoneConnect(); })};
    controller->ReleasePhoneConnect();
    workers[4].join();
    // Half of the connects find their session in the cache.
    targetId = "phone-" + std::to_string(round / 2);
    Connect();
    cloud->SetFaults(faults);
    const bool reached = round % 4 >= 2 || frontEnd->notices.WaitFor(kFirstFrame);
    for (std::thread& worker : workers) {
      if (worker.joinable()) worker.join();
    }
    ASSERT_TRUE(reached);
  }
  EXPECT_TRUE(ReleaseIsPrompt());
  EXPECT_TRUE(CloudHasConnections(0));
  EXPECT_EQ(Sql("collector.db", "SELECT count(*) FROM instances"), Texts{"0"});

  const Texts told = frontEnd->notices.All();
  const auto released = frontEnd;
  cloud->SetFaults({});
  ASSERT_TRUE(ConnectToFirstFrame());
  EXPECT_EQ(released->notices.All(), told);
  EXPECT_TRUE(CloudHasConnections(1));
}

}  // namespace
}  // namespace end_to_end
