#include "tools/qv_cloud/listener.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <utility>

namespace qv_cloud {

namespace net = boost::asio;
using boost::system::error_code;

Listener::Listener(net::io_context& io, OnSocket onSocket) : onSocket(std::move(onSocket)), acceptor(io), pause(io) {
  try {
    const net::ip::tcp::endpoint anyPort(net::ip::address_v4::loopback(), 0);
    acceptor.open(anyPort.protocol());
    acceptor.bind(anyPort);
    acceptor.listen();
    port = acceptor.local_endpoint().port();
  } catch (const boost::system::system_error& error) {
    throw std::runtime_error("cannot listen on 127.0.0.1: " + error.code().message());
  }
  Accept();
}

void Listener::Accept() {
  acceptor.async_accept([this](error_code error, net::ip::tcp::socket socket) {
    if (error == net::error::operation_aborted) return;
    if (!error) {
      onSocket(std::move(socket));
      return Accept();
    }
    // Out of descriptors, say: it may pass.
    pause.expires_after(std::chrono::milliseconds(100));
    pause.async_wait([this](error_code waitError) {
      if (!waitError) Accept();
    });
  });
}

}  // namespace qv_cloud
