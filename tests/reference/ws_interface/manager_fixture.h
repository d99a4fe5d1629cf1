// A manager and the records of a usual connection.
#ifndef TESTS_REFERENCE_WS_INTERFACE_MANAGER_FIXTURE_H
#define TESTS_REFERENCE_WS_INTERFACE_MANAGER_FIXTURE_H

#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <memory>
#include <string>

#include "reference/ws_interface/result_codes.h"
#include "reference/ws_interface/ws_manager.h"
#include "tests/reference/ws_interface/recording_sink.h"

namespace reference::ws {

using boost::asio::ip::tcp;

inline std::string LoopbackUrl(std::uint16_t port) {
  return "ws://127.0.0.1:" + std::to_string(port);
}

// The system takes connections to it over TCP as long as it lives; nobody answers them.
struct SilentPeer {
  boost::asio::io_context context;
  tcp::acceptor acceptor{context, tcp::endpoint(boost::asio::ip::address_v4::loopback(), 0)};
  std::uint16_t Port() const { return acceptor.local_endpoint().port(); }
};

struct ManagerFixture : testing::Test {
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

}  // namespace reference::ws

#endif
