// Takes the TCP connections to one port of the loopback interface.
//
// Threads: constructed and stopped with nobody else at work; accepts on the io_context's thread. Ownership: the
// listener outlives its io_context's run; sockets belong to whom they are handed.
#ifndef QV_CLOUD_LISTENER_H
#define QV_CLOUD_LISTENER_H

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <functional>

namespace qv_cloud {

class Listener {
 public:
  using OnSocket = std::function<void(boost::asio::ip::tcp::socket)>;

  // On a port that the system picks. Throws std::runtime_error when it cannot listen.
  Listener(boost::asio::io_context& io, OnSocket onSocket);

  std::uint16_t Port() const { return port; }

 private:
  void Accept();

  const OnSocket onSocket;
  boost::asio::ip::tcp::acceptor acceptor;
  boost::asio::steady_timer pause;
  std::uint16_t port = 0;
};

}  // namespace qv_cloud

#endif
