#include "reference/ws_interface/beast_transport.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/beast/core/bind_handler.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <exception>
#include <optional>
#include <type_traits>
#include <utility>

#include "reference/common/guarded.h"
#include "reference/common/settings.h"
#include "reference/common/tls_fault.h"
#include "reference/ws_interface/log.h"
#include "reference/ws_interface/name_lookup.h"
#include "reference/ws_interface/tls.h"

namespace reference::ws {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
namespace websocket = boost::beast::websocket;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::size_t kMaxMessageSize = std::size_t{16} << 20;
constexpr std::uint32_t kMaxProxyHeaderSize = 8192;

// Of a connection that ends, or has broken the protocol, Beast would wait without a bound for the peer to close it.
template <class Layer>
struct Abrupt : Layer {
  using Layer::Layer;
};

// Found by Beast. The name is its.
template <class Layer, class Handler>
void async_teardown(beast::role_type /*role*/, Abrupt<Layer>& stream, Handler&& handler) {
  beast::get_lowest_layer(stream).close();
  asio::post(stream.get_executor(), beast::bind_front_handler(std::forward<Handler>(handler), error_code()));
}

using Plain = Abrupt<beast::tcp_stream>;
using Secure = Abrupt<beast::ssl_stream<beast::tcp_stream>>;

// What the hand-shake with an HTTP proxy needs, and only it.
struct Tunnel {
  http::request<http::empty_body> request;
  http::response_parser<http::empty_body> answer;
  beast::flat_buffer buffer;
};

// The steps stand in the order in which they run; each ends in the next or in Fail.
template <class Stream>
class BeastTransport final : public Transport, public std::enable_shared_from_this<BeastTransport<Stream>> {
 public:
  BeastTransport(asio::io_context& context, TlsTrust& trust, Endpoint endpoint, std::chrono::milliseconds keepAlive)
      : context(context), trust(trust), endpoint(std::move(endpoint)), keepAlive(keepAlive) {}

  void Open(std::weak_ptr<TransportSink> newSink) override {
    sink = std::move(newSink);
    asio::post(context, [prepare = Handler([](BeastTransport& self, error_code) { self.Prepare(); })] {
      prepare(error_code());
    });
  }

  void Write(std::string text) override {
    outgoing = std::move(text);
    stream->async_write(asio::buffer(outgoing),
                        Then([](BeastTransport& self) { self.Tell([](TransportSink& sink) { sink.OnWritten(); }); }));
  }

  void Close() noexcept override {
    closed = true;
    lookUp.reset();
    // Without a closing hand-shake: it would wait for a peer that may be the reason for closing.
    if (stream) beast::get_lowest_layer(*stream).close();
  }

  const char* Stage() const override { return stage; }

 private:
  // What an asynchronous operation ends in: next, unless the transport is closed. An exception there, be it the sink's,
  // fails the transport, which would wait for nothing otherwise.
  template <class Next>
  auto Handler(Next next) {
    return [self = this->shared_from_this(), next](error_code error, const auto&... results) {
      if (self->closed) return;
      try {
        next(*self, error, results...);
      } catch (const std::exception& exception) {
        if (!self->closed) self->Fail(std::string(exception.what()));
      }
    };
  }

  // For an operation that need only succeed.
  template <class Next>
  auto Then(Next next) {
    return Handler([next](BeastTransport& self, error_code error, const auto&...) {
      if (error) return self.Fail(error);
      next(self);
    });
  }

  template <class Event>
  void Tell(Event event) {
    // Held during the event, which may close this transport.
    if (const std::shared_ptr<TransportSink> held = sink.lock()) return event(*held);
    // Nobody is left who could close it.
    Close();
  }

  void Fail(const std::string& reason) {
    Close();
    Tell([&](TransportSink& held) { held.OnLost(StageAnd(reason)); });
  }

  std::string StageAnd(const std::string& reason) const noexcept {
    try {
      return std::string(stage) + ": " + reason;
    } catch (const std::bad_alloc&) {
      // Short enough to need none.
      return "out of memory";
    }
  }

  void Fail(error_code error) { Fail(Reason(error)); }

  static std::string Reason(error_code error) {
    if (error == beast::error::timeout) return "the peer was silent for two keep-alive intervals";
    if (error == websocket::error::closed || error == asio::error::eof || error == asio::ssl::error::stream_truncated) {
      return "closed by the peer";
    }
    return error.message();
  }

  void Prepare() {
    stage = "reading the settings";
    const std::string proxyUrl = Proxy();
    if (!proxyUrl.empty()) {
      proxy = ParseProxyUrl(proxyUrl);
      if (!proxy) return Fail(std::string("the proxy is not of the form ") + kProxyUrlForm);
    }
    stage = "preparing TLS";
    // First, so that it is under way while the certificate authorities are read.
    Resolve();
    MakeStream();
    stage = "resolving the name";
  }

  void MakeStream() {
    if constexpr (std::is_same_v<Stream, Secure>) {
      tls = trust.Context();
      stream.emplace(context, *tls);
      if (!ExpectHost(stream->next_layer().native_handle(), endpoint.host)) throw std::bad_alloc();
    } else {
      stream.emplace(context);
    }
    stream->read_message_max(kMaxMessageSize);
    stream->text(true);
  }

  void Resolve() {
    const Endpoint& first = proxy ? *proxy : endpoint;
    lookUp = LookUp(context, first.host, first.port,
                    Handler([](BeastTransport& self, error_code error, const Addresses& addresses) {
                      if (error) return self.Fail(error);
                      self.Tell([](TransportSink& held) { held.OnResolved(); });
                      if (!self.closed) self.Connect(addresses);
                    }));
  }

  void Connect(const Addresses& addresses) {
    stage = "connecting by TCP";
    beast::get_lowest_layer(*stream).async_connect(addresses, Then([](BeastTransport& self) { self.Connected(); }));
  }

  void Connected() {
    // A command leaves at once. Failing to set it costs time only.
    error_code ignored;
    beast::get_lowest_layer(*stream).socket().set_option(tcp::no_delay(true), ignored);
    return proxy ? AskProxy() : Secured();
  }

  void AskProxy() {
    stage = "asking the proxy";
    tunnel.emplace();
    const std::string target = Authority(endpoint);
    tunnel->request = {http::verb::connect, target, 11};
    tunnel->request.set(http::field::host, target);
    // The answer to CONNECT has no body, whatever its headers say.
    tunnel->answer.skip(true);
    tunnel->answer.header_limit(kMaxProxyHeaderSize);
    beast::tcp_stream& tcpStream = beast::get_lowest_layer(*stream);
    http::async_write(tcpStream, tunnel->request, Then([](BeastTransport& self) { self.HearProxy(); }));
  }

  void HearProxy() {
    http::async_read_header(beast::get_lowest_layer(*stream), tunnel->buffer, tunnel->answer,
                            Then([](BeastTransport& self) { self.HeardProxy(); }));
  }

  void HeardProxy() {
    const http::status_class answer = http::to_status_class(tunnel->answer.get().result());
    if (answer != http::status_class::successful) {
      return Fail("it answered with HTTP status " + std::to_string(tunnel->answer.get().result_int()));
    }
    if (tunnel->buffer.size() > 0) return Fail(std::string("it sent data before the tunnel was used"));
    tunnel.reset();
    Secured();
  }

  void Secured() {
    if constexpr (std::is_same_v<Stream, Secure>) {
      stage = "TLS hand-shake";
      stream->next_layer().async_handshake(
          asio::ssl::stream_base::client, Handler([](BeastTransport& self, error_code error) {
            if (!error) return self.Upgrade();
            const SSL* const peer = self.stream->next_layer().native_handle();
            self.Fail(TlsFault(SSL_get_verify_result(peer), SSL_get0_verified_chain(peer), Reason(error)));
          }));
    } else {
      Upgrade();
    }
  }

  void Upgrade() {
    stage = "WebSocket upgrade";
    // The user bounds the hand-shake. Beast pings at half the idle time-out and gives up at the whole.
    const bool pings = keepAlive.count() > 0;
    const auto idle = pings ? 2 * keepAlive : std::chrono::steady_clock::duration(websocket::stream_base::none());
    stream->set_option(websocket::stream_base::timeout{websocket::stream_base::none(), idle, pings});
    stream->async_handshake(
        upgradeAnswer, Authority(endpoint), "/", Handler([](BeastTransport& self, error_code error) {
          if (!error) return self.Opened();
          if (error != websocket::error::upgrade_declined) return self.Fail(error);
          self.Fail("HTTP status " + std::to_string(self.upgradeAnswer.result_int()) + " instead of 101");
        }));
  }

  void Opened() {
    stage = "connected";
    Tell([](TransportSink& held) { held.OnOpen(); });
    if (!closed) Read();
  }

  void Read() {
    stream->async_read(incoming, Then([](BeastTransport& self) { self.Received(); }));
  }

  void Received() {
    const auto bytes = incoming.cdata();
    const auto* const data = static_cast<const std::uint8_t*>(bytes.data());
    Tell([&](TransportSink& held) {
      if (stream->got_text()) return held.OnText({static_cast<const char*>(bytes.data()), bytes.size()});
      held.OnBinary({data, bytes.size()});
    });
    incoming.consume(incoming.size());
    if (!closed) Read();
  }

  asio::io_context& context;
  TlsTrust& trust;
  const Endpoint endpoint;
  const std::chrono::milliseconds keepAlive;

  std::weak_ptr<TransportSink> sink;
  const char* stage = "waiting";
  bool closed = false;
  // The wish for its answer.
  std::shared_ptr<const void> lookUp;
  std::optional<Endpoint> proxy;
  std::optional<Tunnel> tunnel;
  // Outlives the stream that refers to it.
  std::shared_ptr<asio::ssl::context> tls;
  std::optional<websocket::stream<Stream>> stream;
  websocket::response_type upgradeAnswer;
  std::string outgoing;
  beast::flat_buffer incoming;
};

}  // namespace

std::shared_ptr<Transport> MakeBeastTransport(asio::io_context& context, TlsTrust& trust, const Endpoint& endpoint,
                                              std::chrono::milliseconds keepAlive) {
  if (endpoint.secure) return std::make_shared<BeastTransport<Secure>>(context, trust, endpoint, keepAlive);
  return std::make_shared<BeastTransport<Plain>>(context, trust, endpoint, keepAlive);
}

}  // namespace reference::ws
