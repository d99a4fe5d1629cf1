// Everything at once, against real services and their notices; meant for the sanitizers.
#include <thread>

#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

using Controller = std::shared_ptr<qv_data_interface::IQVDataInterface>;

constexpr int kRounds = 60;
constexpr int kCommandsARound = 200;
// How far a connection has come when the next round falls upon it; "" to the first notice of all.
constexpr const char* kMoments[] = {kFirstFrame, "", kConnecting, "OnPlayRsp"};

// Each works on a pointer of its own, so that any of them may hold the last one.
void SendCommands(Controller controller) {
  for (int i = 0; i < kCommandsARound; ++i) {
    controller->SendInReq4(1, 2);
    controller->SendInReq8("text");
    controller->SendInReq15(60, 0);
    controller->SendInMicParamReq(1, 48000, 2);
  }
}

void SwitchLines(Controller controller) {
  for (const std::uint32_t line : {qv_cloud::kLineA, qv_cloud::kLineB, 99U, qv_cloud::kDefaultLine}) {
    controller->ChangeIsp(line);
  }
}

void Release(Controller controller) {
  controller->ReleasePhoneConnect();
}

struct Stress : EndToEnd {
  // Ends the connection while others use it; they go on, and must be joined.
  std::vector<std::thread> EndAmongOthers(bool byDropping) {
    std::vector<std::thread> others;
    for (const auto& work : {SendCommands, SendCommands, SwitchLines, SwitchLines}) {
      others.emplace_back(work, controller);
    }
    if (byDropping) {
      controller = qv_data_interface::IQVDataInterface::Create();
    } else {
      std::thread second(Release, controller);
      controller->ReleasePhoneConnect();
      second.join();
    }
    return others;
  }
};

TEST_F(Stress, ReleasesDestructionsCommandsLineSwitchesAndReconnectsSideBySideLeaveNothingBehind) {
  StartCloud();
  for (int round = 0; round < kRounds; ++round) {
    std::vector<std::thread> others = EndAmongOthers(round % 3 == 2);
    // Half of the connects find their session in the cache.
    targetId = "phone-" + std::to_string(round / 2);
    Connect();
    cloud->SetFaults({.errorCode = qv_cloud::kSessionExpired});
    const bool reached = frontEnd->notices.WaitFor(kMoments[static_cast<std::size_t>(round) % std::size(kMoments)]);
    for (std::thread& other : others) other.join();
    ASSERT_TRUE(reached);
  }
  EXPECT_TRUE(ReleaseIsPrompt());
  EXPECT_TRUE(CloudHasConnections(0));
  EXPECT_EQ(Sql("collector.db", "SELECT count(*) FROM instances"), Texts{"0"});

  const Texts told = frontEnd->notices.Lines();
  const auto released = frontEnd;
  cloud->SetFaults({});
  ASSERT_TRUE(ConnectToFirstFrame());
  EXPECT_EQ(released->notices.Lines(), told);
  EXPECT_TRUE(CloudHasConnections(1));
}

}  // namespace
}  // namespace end_to_end
