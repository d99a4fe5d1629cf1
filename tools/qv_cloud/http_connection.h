// One HTTP or HTTPS connection: carries requests to AnswerHttp and its replies back, with every size and wait bounded.
//
// Threads: the io_context's thread. Ownership: the connection keeps itself alive until it ends; State and the TLS
// context outlive it.
#ifndef QV_CLOUD_HTTP_CONNECTION_H
#define QV_CLOUD_HTTP_CONNECTION_H

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>

#include "tools/qv_cloud/state.h"

namespace qv_cloud {

// tls: null for plain http.
void ServeHttp(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context* tls, State& state);

}  // namespace qv_cloud

#endif
