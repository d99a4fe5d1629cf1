// One WebSocket connection: carries messages between a client and its Conversation, in order and with every size and
// wait bounded.
//
// Threads: the io_context's thread. Ownership: the connection keeps itself alive until it ends; State and the TLS
// context outlive it.
#ifndef QV_CLOUD_WS_CONNECTION_H
#define QV_CLOUD_WS_CONNECTION_H

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <cstdint>
#include <memory>

#include "tools/qv_cloud/state.h"

namespace qv_cloud {

class WsConnection {
 public:
  virtual ~WsConnection() = default;

  // The faults have changed: what waits looks at them again.
  virtual void Wake() = 0;
};

// tls: null for plain ws. Empty when the connection has been closed at once.
std::weak_ptr<WsConnection> ServeSignalling(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context* tls,
                                            State& state, std::uint32_t line);

}  // namespace qv_cloud

#endif
