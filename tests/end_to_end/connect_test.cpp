// The way of a connection to its first frame, from the service and from the cache, and what is left of it on disk.
#include "tests/end_to_end/end_to_end.h"
#include "tools/qv_connect/history.h"

namespace end_to_end {
namespace {

struct Connecting : EndToEnd {
  // All of the newest connection's are there, and no step of it ends before it begins.
  void ExpectWholeMilestones(std::size_t connections) {
    const auto stored = qv_connect::ReadConnections(directory, targetId, connections + 1);
    ASSERT_EQ(stored.size(), connections);
    const qv_connect::Milestones& milestones = qv_connect::MilestonesOf(stored.front());
    EXPECT_EQ(milestones.size(), 10U);
    EXPECT_EQ(qv_connect::SpansOf(milestones).size(), 7U);
    EXPECT_GE(milestones.at("startConnect"), milestones.at("endGetInstanceInfo"));
    EXPECT_GE(milestones.at("startAuth"), milestones.at("connectSucc"));
  }

  // Those of the WebSocket library; the list of lines comes on another thread.
  Texts ConnectionNotices() const {
    Texts notices = frontEnd->notices.Lines();
    std::erase_if(notices, [](const std::string& notice) { return notice.starts_with("OnIspList"); });
    return notices;
  }
};

const Texts kWayToTheFirstFrame = {"OnStatus(60701003, web socket connecting)", "OnChooseVideoFormat(264 265)",
                                   "OnStatus(0, success)", "OnPlayRsp(0, 0, 264, 720, 1280, 30, 2048, 0, 0, 0)",
                                   "OnFirstFrame(0, 0, 1024, 264)"};

TEST_F(Connecting, TheSecondConnectOfAnIdentityIsServedFromTheCache) {
  StartCloud();
  ASSERT_TRUE(ConnectToFirstFrame());
  EXPECT_EQ(ConnectionNotices(), kWayToTheFirstFrame);
  ASSERT_TRUE(frontEnd->notices.WaitFor("OnIspList(1=Line A;2=Line B;, 2)"));
  EXPECT_EQ(Log().find("Hit session cache"), std::string::npos);
  ExpectWholeMilestones(1);
  ASSERT_TRUE(ReleaseIsPrompt());

  controller = qv_data_interface::IQVDataInterface::Create();
  ASSERT_TRUE(ConnectToFirstFrame());
  EXPECT_EQ(ConnectionNotices(), kWayToTheFirstFrame);
  EXPECT_EQ(frontEnd->notices.Count("OnIspList(1=Line A;2=Line B;, 2)"), 1U);
  EXPECT_NE(Log().find("[QV_DATA_INTERFACE][phone-1] Hit session cache"), std::string::npos);
  EXPECT_EQ(Stats().phoneConnects, 1U);
  EXPECT_EQ(Stats().authentications, 2U);
  ExpectWholeMilestones(2);
}

TEST_F(Connecting, TheCollectorHoldsARowAsLongAsTheConnectionAndEveryStatus) {
  StartCloud();
  ASSERT_TRUE(ConnectToFirstFrame());
  ASSERT_TRUE(frontEnd->notices.WaitFor("OnIspList"));
  EXPECT_EQ(Sql("collector.db", "SELECT target_id, default_mode, channel, sdk_type FROM instances"),
            Texts{"phone-1|1|websocket|data_interface"});
  controller->ReleasePhoneConnect();
  EXPECT_EQ(Sql("collector.db", "SELECT target_id FROM instances"), Texts{});
  EXPECT_EQ(Sql("collector.db", "SELECT collect_type, collect_status, error_code FROM messages ORDER BY id"),
            (Texts{"0|3|60701003", "1|3|", "1|1|", "1|2|", "1|4|"}));
  EXPECT_EQ(Sql("collector.db",
                "SELECT DISTINCT ws_domain, ws_port, connecting_count FROM messages WHERE "
                "collect_status = 4 AND release_time > 0 AND process_name LIKE 'end_to_end_tests%'"),
            Texts{"localhost|" + std::to_string(cloud->LinePort(qv_cloud::kDefaultLine)) + "|1"});
}

TEST_F(Connecting, WithoutTlsItConnectsToo) {
  qv_cloud::CloudOptions options;
  options.plain = true;
  StartCloud(options);
  system.useWss = false;
  EXPECT_TRUE(ConnectToFirstFrame());
}

TEST_F(Connecting, TwoControllersLiveSideBySide) {
  StartCloud();
  ASSERT_TRUE(ConnectToFirstFrame());
  const auto first = controller;
  const auto firstFrontEnd = frontEnd;
  controller = qv_data_interface::IQVDataInterface::Create();
  targetId = "phone-2";
  ASSERT_TRUE(ConnectToFirstFrame());
  EXPECT_TRUE(CloudHasConnections(2));
  controller->ReleasePhoneConnect();
  EXPECT_TRUE(CloudHasConnections(1));
  EXPECT_EQ(first->SendInReq8("still here"), 0);
  EXPECT_TRUE(firstFrontEnd->notices.WaitFor("OnNotice8(still here)"));
}

}  // namespace
}  // namespace end_to_end
