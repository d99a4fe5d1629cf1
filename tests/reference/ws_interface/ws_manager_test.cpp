// Making and ending connections, over sockets of this machine.
#include "reference/ws_interface/ws_manager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <mutex>
#include <set>
#include <thread>

#include "reference/common/service_threads.h"
#include "reference/ws_interface/result_codes.h"
#include "tests/reference/ws_interface/recording_sink.h"
#include "tests/support/moment.h"

namespace reference::ws {
namespace {

using boost::asio::ip::tcp;

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
    const auto connection = Create(peer.Url());
    ASSERT_TRUE(connection);
    manager->Stop();
    EXPECT_EQ(connection->SendDummyReq(), kNotConnected);
    EXPECT_EQ(connection->SetSessionId("s-2"), kTaken);
    EXPECT_FALSE(Create(peer.Url()));
    manager->Stop();
  }
}

TEST_F(WsManagerTest, ABadArgumentMakesNoConnection) {
  manager->Initialise(10, 5000);
  const char* const url = "ws://127.0.0.1:1";
  const ws_interface::WSSystemParam noInterval{1, 0, 0, 0};
  ws_interface::WSConnectInfo unterminated = connectInfo;
  std::fill(std::begin(unterminated.identityText), std::end(unterminated.identityText), 'x');
  const auto create = [this](const char* target, auto* connect, auto* system) {
    return manager->CreateWS("user", target, connect, &videoInfo, &defaultParam, system, sink, 0);
  };
  EXPECT_TRUE(create(url, &connectInfo, &systemParam));
  EXPECT_FALSE(create("wss://:443", &connectInfo, &systemParam));
  EXPECT_FALSE(create(url, &unterminated, &systemParam));
  EXPECT_FALSE(create(url, &connectInfo, &noInterval));
  for (int missing = 0; missing < 7; ++missing) {
    const auto given = [missing](int number, auto pointer) { return number == missing ? nullptr : pointer; };
    EXPECT_FALSE(manager->CreateWS(given(0, "user"), given(1, url), given(2, &connectInfo), given(3, &videoInfo),
                                   given(4, &defaultParam), given(5, &systemParam), given(6, sink), 0))
        << missing;
  }
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
    ASSERT_TRUE(sink->WaitFor("OnConnectStep(5)"));
  }
  EXPECT_EQ(threads.size(), cores);
  for (const auto& each : managers) {
    EXPECT_FALSE(WaitForServiceThreads({}));
    each->Stop();
  }
  EXPECT_TRUE(WaitForServiceThreads({}));
}

}  // namespace
}  // namespace reference::ws
