// The way of a connection to its first frame, from the service and from the cache, and what is left of it on disk.
#include <map>

#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

struct Connecting : EndToEnd {
  // The milestones that went out with the newest first-frame message.
  std::map<std::string, std::int64_t> Milestones() const {
    std::map<std::string, std::int64_t> times;
    for (const std::string& row : Sql("collector.db", R"(SELECT name, time FROM milestones WHERE message_id =
           (SELECT max(id) FROM messages WHERE collect_type = 1 AND collect_status = 2))")) {
      const std::size_t bar = row.find('|');
      times[row.substr(0, bar)] = std::stoll(row.substr(bar + 1));
    }
    return times;
  }

  static void ExpectInOrder(const std::map<std::string, std::int64_t>& times) {
    const Texts names = {"startGetInstanceInfo",
                         "endGetInstanceInfo",
                         "startConnect",
                         "dnsParseSucc",
                         "connectSucc",
                         "startAuth",
                         "onAuthR",
                         "sendPlay",
                         "onPlayR",
                         "recvFirstFrame"};
    EXPECT_EQ(times.size(), names.size());
    std::int64_t before = 1;
    for (const std::string& name : names) {
      ASSERT_TRUE(times.contains(name)) << name;
      EXPECT_GE(times.at(name), before) << name;
      before = times.at(name);
    }
  }

  // Those of the WebSocket library; the list of lines comes on another thread.
  Texts ConnectionNotices() const {
    Texts notices = frontEnd->notices.All();
    std::erase_if(notices, [](const std::string& notice) { return notice.starts_with("OnIspList"); });
    return notices;
  }
};

const Texts kWayToTheFirstFrame = {"OnStatus 60701003: web socket connecting", "OnChooseVideoFormat 264 265",
                                   "OnStatus 0: success", "OnPlayRsp 0 0 264 720 1280 30 2048 0 0 0",
                                   "OnFirstFrame 0 1024 264"};

TEST_F(Connecting, TheSecondConnectOfAnIdentityIsServedFromTheCache) {
  StartCloud();
  ASSERT_TRUE(ConnectToFirstFrame());
  EXPECT_EQ(ConnectionNotices(), kWayToTheFirstFrame);
  ASSERT_TRUE(frontEnd->notices.WaitFor("OnIspList 1=Line A 2=Line B"));
  EXPECT_EQ(Log().find("Hit session cache"), std::string::npos);
  const auto first = Milestones();
  ExpectInOrder(first);
  ASSERT_TRUE(ReleaseIsPrompt());

  controller = qv_data_interface::IQVDataInterface::Create();
  ASSERT_TRUE(ConnectToFirstFrame());
  EXPECT_EQ(ConnectionNotices(), kWayToTheFirstFrame);
  EXPECT_EQ(frontEnd->notices.Count("OnIspList 1=Line A 2=Line B"), 1U);
  EXPECT_NE(Log().find("[QV_DATA_INTERFACE][phone-1] Hit session cache"), std::string::npos);
  EXPECT_EQ(Stats().phoneConnects, 1U);
  EXPECT_EQ(Stats().authentications, 2U);
  const auto second = Milestones();
  ExpectInOrder(second);
  EXPECT_GE(second.at("startGetInstanceInfo"), first.at("recvFirstFrame"));
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
  EXPECT_TRUE(firstFrontEnd->notices.WaitFor("OnNotice8 still here"));
}

}  // namespace
}  // namespace end_to_end
