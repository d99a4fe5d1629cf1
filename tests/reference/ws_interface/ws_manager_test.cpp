// Making and ending connections, over sockets of this machine.
#include "reference/ws_interface/ws_manager.h"

#include <algorithm>
#include <future>

#include "tests/reference/ws_interface/manager_fixture.h"

namespace reference::ws {
namespace {

constexpr std::chrono::seconds kPatience{10};

struct WsManagerTest : ManagerFixture {};

TEST_F(WsManagerTest, OnlyAnInitialisedManagerMakesConnections) {
  const SilentPeer peer;
  const std::string url = LoopbackUrl(peer.Port());
  EXPECT_FALSE(Create(url));
  EXPECT_EQ(manager->Initialise(10, 0), kBadArgument);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(manager->Initialise(10, 5000), kTaken);
    EXPECT_EQ(manager->Initialise(10, 5000), kTaken);
    EXPECT_TRUE(Create(url));
    manager->Stop();
    EXPECT_FALSE(Create(url));
    manager->Stop();
  }
}

TEST_F(WsManagerTest, ABadArgumentMakesNoConnection) {
  manager->Initialise(10, 5000);
  const std::string url = "ws://127.0.0.1:1";
  const auto create = [&](const char* credential, const char* urlText, const ws_interface::WSConnectInfo* connect,
                          const ws_interface::WSVideoInfo* video, const ws_interface::WSDefaultParam* defaults,
                          const ws_interface::WSSystemParam* system) {
    return manager->CreateWS(credential, urlText, connect, video, defaults, system, sink, 0);
  };
  EXPECT_FALSE(create(nullptr, url.c_str(), &connectInfo, &videoInfo, &defaultParam, &systemParam));
  EXPECT_FALSE(create("user", nullptr, &connectInfo, &videoInfo, &defaultParam, &systemParam));
  EXPECT_FALSE(create("user", "wss://:443", &connectInfo, &videoInfo, &defaultParam, &systemParam));
  EXPECT_FALSE(create("user", url.c_str(), nullptr, &videoInfo, &defaultParam, &systemParam));
  EXPECT_FALSE(create("user", url.c_str(), &connectInfo, nullptr, &defaultParam, &systemParam));
  EXPECT_FALSE(create("user", url.c_str(), &connectInfo, &videoInfo, nullptr, &systemParam));
  EXPECT_FALSE(create("user", url.c_str(), &connectInfo, &videoInfo, &defaultParam, nullptr));

  ws_interface::WSConnectInfo unterminated = connectInfo;
  std::fill(std::begin(unterminated.identityText), std::end(unterminated.identityText), 'x');
  EXPECT_FALSE(create("user", url.c_str(), &unterminated, &videoInfo, &defaultParam, &systemParam));
  const ws_interface::WSSystemParam noInterval{1, 0, 0, 0};
  EXPECT_FALSE(create("user", url.c_str(), &connectInfo, &videoInfo, &defaultParam, &noInterval));
  sink.reset();
  EXPECT_FALSE(Create(url));
}

TEST_F(WsManagerTest, ARefusedConnectionIsReportedAndTriedAgain) {
  auto peer = std::make_unique<SilentPeer>();
  const std::uint16_t port = peer->Port();
  peer.reset();
  manager->Initialise(10, 5000);
  const auto connection = Create(LoopbackUrl(port));
  ASSERT_TRUE(sink->WaitFor("state 1", 2));
  const std::vector<std::string> lines = sink->Lines();
  EXPECT_EQ(std::vector(lines.begin(), lines.begin() + 4),
            (std::vector<std::string>{"state 1", "step 5", "state 0", "state 1"}));
  EXPECT_EQ(connection->SendDummyReq(), kNotConnected);
}

TEST_F(WsManagerTest, APeerThatAcceptsAndStaysSilentIsGivenUpInTime) {
  const SilentPeer peer;
  manager->Initialise(10, 50);
  Create(LoopbackUrl(peer.Port()));
  EXPECT_TRUE(sink->WaitFor("state 1", 2));
}

TEST_F(WsManagerTest, StopDoesNotWaitForASilentPeerAndEndsTheNotices) {
  const SilentPeer peer;
  manager->Initialise(10, 60000);
  const auto connection = Create(LoopbackUrl(peer.Port()));
  ASSERT_TRUE(sink->WaitFor("step 5"));
  auto stopped = std::async(std::launch::async, [this] { manager->Stop(); });
  ASSERT_EQ(stopped.wait_for(kPatience), std::future_status::ready);
  manager.reset();
  EXPECT_EQ(sink->Lines(), (std::vector<std::string>{"state 1", "step 5"}));
  EXPECT_EQ(connection->SendDummyReq(), kNotConnected);
  EXPECT_EQ(connection->SetSessionId("s-2"), kTaken);
}

TEST_F(WsManagerTest, OnlyItsOwnManagerDestroysAConnectionAndOnce) {
  const SilentPeer peer;
  manager->Initialise(10, 50);
  const auto connection = Create(LoopbackUrl(peer.Port()));
  WsManager stranger;
  stranger.Initialise(10, 50);
  stranger.DestroyWS(connection);
  stranger.DestroyWS(nullptr);
  stranger.Stop();
  ASSERT_TRUE(sink->WaitFor("state 1", 2)) << "it still lives";

  manager->DestroyWS(connection);
  const std::vector<std::string> lines = sink->Lines();
  manager->DestroyWS(connection);
  manager->Stop();
  EXPECT_EQ(sink->Lines(), lines);
}

TEST_F(WsManagerTest, DestroyingWaitsForTheNoticeInFlight) {
  const SilentPeer peer;
  manager->Initialise(10, 60000);
  std::promise<void> begun, goOn;
  bool ended = false;
  sink->inside = [&](const std::string& line) {
    if (line != "step 5") return;
    begun.set_value();
    goOn.get_future().wait_for(kPatience);
    ended = true;
  };
  const auto connection = Create(LoopbackUrl(peer.Port()));
  ASSERT_EQ(begun.get_future().wait_for(kPatience), std::future_status::ready);
  auto destroyed = std::async(std::launch::async, [&] {
    manager->DestroyWS(connection);
    return ended;
  });
  goOn.set_value();
  EXPECT_TRUE(destroyed.get());
}

// The sink is the manager's owner, as the library's controller is.
struct OwningSink : RecordingSink {
  ~OwningSink() override {
    manager->DestroyWS(connection);
    manager->Stop();
    manager.reset();
    died.set_value(std::this_thread::get_id());
  }
  std::shared_ptr<ws_interface::IWSManagerInterface> manager;
  std::shared_ptr<ws_interface::IWSInterface> connection;
  std::promise<std::thread::id>& died;
  explicit OwningSink(std::promise<std::thread::id>& died) : died(died) {}
};

TEST_F(WsManagerTest, ASinkThatDiesInsideItsNoticeStopsItsManagerThere) {
  const SilentPeer peer;
  for (const std::string last : {"state 1", "step 5", "state 0"}) {
    std::promise<std::thread::id> died;
    std::promise<void> begun, dropped;
    std::thread::id noticeThread;
    auto owner = std::make_shared<OwningSink>(died);
    owner->inside = [&](const std::string& line) {
      if (line != last) return;
      noticeThread = std::this_thread::get_id();
      begun.set_value();
      dropped.get_future().wait_for(kPatience);
    };
    manager->Initialise(10, 50);
    sink = owner;
    owner->manager = manager;
    owner->connection = Create(LoopbackUrl(peer.Port()));
    manager = std::make_shared<WsManager>();
    ASSERT_EQ(begun.get_future().wait_for(kPatience), std::future_status::ready);
    sink.reset();
    owner.reset();
    dropped.set_value();
    auto death = died.get_future();
    ASSERT_EQ(death.wait_for(kPatience), std::future_status::ready);
    EXPECT_EQ(death.get(), noticeThread);
  }
}

}  // namespace
}  // namespace reference::ws
