// What can go wrong with a connection below HTTP and WebSocket: at its acceptance and in the middle of TLS.
//
// Threads: the io_context's thread. Ownership: what waits keeps itself alive until it ends; State and the TLS context
// outlive it.
#ifndef QV_CLOUD_ADMISSION_H
#define QV_CLOUD_ADMISSION_H

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <functional>
#include <memory>
#include <string>

#include "tools/qv_cloud/state.h"

namespace qv_cloud {

using Serve = std::function<void(boost::asio::ip::tcp::socket)>;

// Hands the socket on, unless the faults ask for something else. tls: null for a plain connection, which has no hello.
void Admit(boost::asio::ip::tcp::socket socket, Service service, boost::asio::ssl::context* tls, State& state,
           Serve serve);

// Throws away what the client sends until it leaves or a minute has passed; then lets the owner of the socket go.
void HoldInSilence(boost::asio::ip::tcp::socket& socket, std::shared_ptr<void> owner);

// Longer than what a client may still wait for in the middle of a TLS message.
std::string Garbage();

}  // namespace qv_cloud

#endif
