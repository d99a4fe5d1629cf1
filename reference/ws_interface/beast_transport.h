// The way to an open WebSocket over Boost.Beast: name, TCP, proxy, TLS, upgrade; then its messages.
//
// Threads: the io_context's one thread. Ownership: a transport keeps itself alive while an operation is under
// way; what it is given by reference lasts until the thread ends.
#ifndef REFERENCE_WS_INTERFACE_BEAST_TRANSPORT_H
#define REFERENCE_WS_INTERFACE_BEAST_TRANSPORT_H

#include <boost/asio/io_context.hpp>
#include <memory>

#include "reference/ws_interface/tls.h"
#include "reference/ws_interface/transport.h"

namespace reference::ws {

std::shared_ptr<Transport> MakeBeastTransport(boost::asio::io_context& context, TlsTrust& trust,
                                              const Endpoint& endpoint, std::chrono::milliseconds keepAlive);

}  // namespace reference::ws

#endif
