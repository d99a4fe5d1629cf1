#include "tools/qv_cloud/http_connection.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <chrono>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "tools/qv_cloud/admission.h"
#include "tools/qv_cloud/service.h"

namespace qv_cloud {
namespace {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using boost::system::error_code;

constexpr std::uint64_t kMaxBody = 64 * 1024;
constexpr std::uint32_t kMaxHeader = 8 * 1024;
constexpr auto kIdleTimeout = std::chrono::seconds(60);

template <class Stream>
class HttpConnection : public std::enable_shared_from_this<HttpConnection<Stream>> {
 public:
  template <class... TlsContext>
  HttpConnection(net::ip::tcp::socket socket, State& state, TlsContext&... tls)
      : stream(std::move(socket), tls...), delay(stream.get_executor()), state(state) {}

  void Start() {
    if constexpr (kIsTls) {
      LimitWait();
      stream.async_handshake(net::ssl::stream_base::server, [self = this->shared_from_this()](error_code error) {
        if (!error) self->Secured();
      });
    } else {
      ReadRequest();
    }
  }

 private:
  static constexpr bool kIsTls = !std::is_same_v<Stream, beast::tcp_stream>;

  void LimitWait() { beast::get_lowest_layer(stream).expires_after(kIdleTimeout); }

  void Secured() {
    switch (state.FaultAt(Service::http, Step::tls)) {
      case Fault::none:
        return ReadRequest();
      case Fault::close:
        return;
      case Fault::silent:
        return Hold();
      case Fault::garbage:
        response.body() = Garbage();
        net::async_write(stream, net::buffer(response.body()),
                         [self = this->shared_from_this()](error_code, std::size_t) { self->Hold(); });
    }
  }

  void ReadRequest() {
    parser.emplace();
    parser->body_limit(kMaxBody);
    parser->header_limit(kMaxHeader);
    LimitWait();
    http::async_read(stream, buffer, *parser,
                     [self = this->shared_from_this()](error_code error, std::size_t) { self->OnRequest(error); });
  }

  void OnRequest(error_code error) {
    HttpReply reply;
    if (error == http::error::body_limit) {
      reply.status = 413;
      return Write(reply, false);
    }
    if (error) return;  // left, too slow, or not HTTP
    const auto& request = parser->get();
    reply = AnswerHttp(
        state,
        HttpRequest{request.method_string(), request.target(), request[http::field::content_type], request.body()},
        Now());
    switch (reply.sending) {
      case HttpReply::Sending::close:
        return;
      case HttpReply::Sending::never:
        return Hold();
      case HttpReply::Sending::half:
      case HttpReply::Sending::normal:
        break;
    }
    if (reply.after.count() == 0) return Write(reply, request.keep_alive());
    delay.expires_after(reply.after);
    delay.async_wait([self = this->shared_from_this(), reply](error_code waitError) {
      if (!waitError) self->Write(reply, self->parser->get().keep_alive());
    });
  }

  void Write(const HttpReply& reply, bool keepAlive) {
    response = {};
    response.result(reply.status);
    response.set(http::field::content_type, "application/json");
    if (reply.retryAfterSeconds != 0) response.set(http::field::retry_after, std::to_string(reply.retryAfterSeconds));
    response.keep_alive(keepAlive);
    response.body() = reply.body;
    response.prepare_payload();
    const bool isHalf = reply.sending == HttpReply::Sending::half;
    if (isHalf) response.content_length(2 * reply.body.size());
    LimitWait();
    http::async_write(stream, response, [self = this->shared_from_this(), isHalf](error_code error, std::size_t) {
      if (error) return;
      if (isHalf) return self->Hold();
      if (self->response.keep_alive()) return self->ReadRequest();
      self->Close();
    });
  }

  void Hold() { HoldInSilence(beast::get_lowest_layer(stream).socket(), this->shared_from_this()); }

  void Close() {
    if constexpr (kIsTls) {
      LimitWait();
      stream.async_shutdown([self = this->shared_from_this()](error_code) {});
    } else {
      error_code ignored;
      stream.socket().shutdown(net::ip::tcp::socket::shutdown_send, ignored);
    }
  }

  Stream stream;
  net::steady_timer delay;
  State& state;
  beast::flat_buffer buffer{kMaxBody + kMaxHeader};
  std::optional<http::request_parser<http::string_body>> parser;
  http::response<http::string_body> response;
};

}  // namespace

void ServeHttp(net::ip::tcp::socket socket, net::ssl::context* tls, State& state) {
  // Otherwise the first answer over TLS waits 40 ms behind the session tickets, for the client to acknowledge them.
  error_code ignored;
  socket.set_option(net::ip::tcp::no_delay(true), ignored);
  if (tls) {
    using Connection = HttpConnection<beast::ssl_stream<beast::tcp_stream>>;
    std::make_shared<Connection>(std::move(socket), state, *tls)->Start();
  } else {
    std::make_shared<HttpConnection<beast::tcp_stream>>(std::move(socket), state)->Start();
  }
}

}  // namespace qv_cloud
