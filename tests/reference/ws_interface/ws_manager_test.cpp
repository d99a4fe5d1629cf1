// Making and ending connections, over sockets of this machine.
#include "reference/ws_interface/ws_manager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <future>
#include <mutex>
#include <set>
#include <thread>

#include "reference/common/service_threads.h"
#include "reference/ws_interface/result_codes.h"
#include "tests/reference/common/moment.h"
#include "tests/reference/ws_interface/recording_sink.h"

namespace reference::ws {
namespace {

using boost::asio::ip::tcp;
using Lines = std::vector<std::string>;
using std::chrono::steady_clock;

// The system takes connections to it over TCP as long as it lives; nobody answers them.
struct SilentPeer {
  boost::asio::io_context context;
  tcp::acceptor acceptor{context, tcp::endpoint(boost::asio::ip::address_v4::loopback(), 0)};
  std::string Url() const { return "ws://127.0.0.1:" + std::to_string(acceptor.local_endpoint().port()); }
};

struct WsManagerTest : testing::Test {
  std::shared_ptr<ws_interface::IWSInterface> Create(const std::string& url) {
    return manager->CreateWS("user", url.c_str(), &connectInfo, &videoInfo, &defaultParam, &systemParam, sink, 0);
  }

  ws_interface::WSConnectInfo connectInfo{"s-1", "phone-1", "1.13.0", 3, 0, "", 2, 0};
  ws_interface::WSVideoInfo videoInfo{{264, 720, 1280, 30, 2048}, "", ""};
  ws_interface::WSDefaultParam defaultParam{1, 48000, 2, 0};
  ws_interface::WSSystemParam systemParam{0, 0, 0, 0};
  std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
  std::shared_ptr<WsManager> manager = std::make_shared<WsManager>();
};

TEST_F(WsManagerTest, OnlyAnInitialisedManagerMakesConnections) {
  const SilentPeer peer;
  EXPECT_FALSE(Create(peer.Url()));
  EXPECT_EQ(manager->Initialise(10, 0), kBadArgument);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(manager->Initialise(10, 5000), kTaken);
    EXPECT_EQ(manager->Initialise(10, 5000), kTaken);
    EXPECT_TRUE(Create(peer.Url()));
    manager->Stop();
    EXPECT_FALSE(Create(peer.Url()));
    manager->Stop();
  }
}

TEST_F(WsManagerTest, ABadArgumentMakesNoConnection) {
  manager->Initialise(10, 5000);
  const char* const url = "ws://127.0.0.1:1";
  const auto create = [this](auto... arguments) { return manager->CreateWS(arguments..., sink, 0); };
  EXPECT_FALSE(create("user", "wss://:443", &connectInfo, &videoInfo, &defaultParam, &systemParam));
  EXPECT_FALSE(create("user", nullptr, &connectInfo, &videoInfo, &defaultParam, &systemParam));
  EXPECT_FALSE(create(nullptr, url, &connectInfo, &videoInfo, &defaultParam, &systemParam));
  EXPECT_FALSE(create("user", url, nullptr, &videoInfo, &defaultParam, &systemParam));
  EXPECT_FALSE(create("user", url, &connectInfo, nullptr, &defaultParam, &systemParam));
  EXPECT_FALSE(create("user", url, &connectInfo, &videoInfo, nullptr, &systemParam));
  EXPECT_FALSE(create("user", url, &connectInfo, &videoInfo, &defaultParam, nullptr));
  const ws_interface::WSSystemParam noInterval{1, 0, 0, 0};
  EXPECT_FALSE(create("user", url, &connectInfo, &videoInfo, &defaultParam, &noInterval));
  ws_interface::WSConnectInfo unterminated = connectInfo;
  std::fill(std::begin(unterminated.identityText), std::end(unterminated.identityText), 'x');
  EXPECT_FALSE(create("user", url, &unterminated, &videoInfo, &defaultParam, &systemParam));
  sink.reset();
  EXPECT_FALSE(Create(url));
}

TEST_F(WsManagerTest, ARefusedConnectionAndASilentPeerAreReportedAndTriedAgain) {
  const SilentPeer silent;
  const struct {
    std::string url;
    std::uint32_t timeoutMs;
  } peers[] = {{silent.Url(), 50}, {SilentPeer().Url(), 60000}};
  for (const auto& peer : peers) {
    sink = std::make_shared<RecordingSink>();
    manager->Initialise(10, peer.timeoutMs);
    Create(peer.url);
    ASSERT_TRUE(sink->WaitFor("state 1", 2)) << peer.timeoutMs;
    const Lines lines = sink->Lines();
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 4), (Lines{"state 1", "step 5", "state 0", "state 1"}));
  }
}

TEST_F(WsManagerTest, APeerSilentForTwoKeepAliveIntervalsIsLost) {
  SilentPeer peer;
  // Grants the connection and lets it stand, reading no WebSocket frame and so answering no ping.
  const auto granted = std::async(std::launch::async, [&] {
    boost::beast::websocket::stream<tcp::socket> stream(peer.acceptor.accept());
    stream.accept();
    const std::string grant = R"({"type":"authRsp","code":0,"message":"success","formats":"264"})";
    stream.write(boost::asio::buffer(grant));
    std::string rest;
    boost::system::error_code dropped;
    boost::asio::read(stream.next_layer(), boost::asio::dynamic_buffer(rest), dropped);
  });
  systemParam = {1, 50, 0, 0};
  manager->Initialise(10, 60000);
  Create(peer.Url());
  EXPECT_TRUE(sink->WaitFor("state 2"));
  EXPECT_TRUE(sink->WaitFor("state 0"));
  manager->Stop();
}

TEST_F(WsManagerTest, StopDoesNotWaitForASilentPeerAndEndsTheNotices) {
  const SilentPeer peer;
  manager->Initialise(10, 60000);
  const auto connection = Create(peer.Url());
  ASSERT_TRUE(sink->WaitFor("step 5"));
  const auto begin = steady_clock::now();
  manager->Stop();
  manager.reset();
  EXPECT_LT(steady_clock::now() - begin, tests::kPatience);
  EXPECT_EQ(sink->Lines(), (Lines{"state 1", "step 5"}));
  EXPECT_EQ(connection->SendDummyReq(), kNotConnected);
  EXPECT_EQ(connection->SetSessionId("s-2"), kTaken);
}

TEST_F(WsManagerTest, ManagersShareAThreadACoreWhichEndsWithTheLastOfThem) {
  const SilentPeer peer;
  const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
  std::mutex mutex;
  std::set<std::thread::id> threads;
  std::vector<std::shared_ptr<WsManager>> managers(2 * cores);
  for (auto& each : managers) {
    each = manager = std::make_shared<WsManager>();
    sink = std::make_shared<RecordingSink>();
    sink->inside = [&](const std::string&) {
      const std::lock_guard<std::mutex> lock(mutex);
      threads.insert(std::this_thread::get_id());
    };
    manager->Initialise(10, 60000);
    Create(peer.Url());
    ASSERT_TRUE(sink->WaitFor("step 5"));
  }
  EXPECT_EQ(threads.size(), cores);
  for (const auto& each : managers) {
    EXPECT_FALSE(WaitForServiceThreads({}));
    each->Stop();
  }
  EXPECT_TRUE(WaitForServiceThreads({}));
}

// The sink is the manager's owner, as the library's controller is.
TEST_F(WsManagerTest, ASinkThatDiesInsideItsNoticeStopsItsManagerThere) {
  const SilentPeer peer;
  for (const std::string last : {"state 1", "step 5", "state 0"}) {
    tests::Moment ready, died;
    std::thread::id noticeThread, deathThread;
    auto owner = std::make_shared<tests::DyingSink<RecordingSink>>();
    owner->inside = [&](const std::string& line) {
      if (line != last) return;
      EXPECT_TRUE(ready.Await());
      noticeThread = std::this_thread::get_id();
      owner.reset();
    };
    sink = owner;
    manager->Initialise(10, 50);
    owner->lastAct = [&, connection = Create(peer.Url()), owned = manager]() mutable {
      owned->DestroyWS(connection);
      owned->Stop();
      owned.reset();
      deathThread = std::this_thread::get_id();
      died.Come();
    };
    manager = std::make_shared<WsManager>();
    sink.reset();
    ready.Come();
    ASSERT_TRUE(died.Await()) << last;
    EXPECT_EQ(deathThread, noticeThread) << last;
  }
}

}  // namespace
}  // namespace reference::ws
