#include "tools/qv_cloud/ws_connection.h"

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <chrono>
#include <deque>
#include <optional>
#include <type_traits>
#include <utility>

#include "tools/qv_cloud/admission.h"
#include "tools/qv_cloud/conversation.h"

namespace qv_cloud {
namespace {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace websocket = boost::beast::websocket;
using boost::system::error_code;

constexpr std::size_t kMaxMessage = 1024 * 1024;
// With more than this unsent, nothing is read and no frame is made until the client has taken some.
constexpr std::size_t kMaxUnsent = 1024 * 1024;
constexpr auto kHandshakeTimeout = std::chrono::seconds(10);
constexpr auto kIdleTimeout = std::chrono::minutes(5);

template <class Stream>
class WsConnectionOver : public WsConnection, public std::enable_shared_from_this<WsConnectionOver<Stream>> {
 public:
  template <class... TlsContext>
  WsConnectionOver(net::ip::tcp::socket socket, State& state, std::uint32_t line, TlsContext&... tls)
      : ws(std::move(socket), tls...),
        sendTimer(ws.get_executor()),
        wakeTimer(ws.get_executor()),
        state(state),
        line(line),
        conversation(state, line) {}

  ~WsConnectionOver() override {
    if (upgraded) state.observation.Change([this](CloudStats& stats) { --stats.lines[line].now; });
  }

  void Start() {
    beast::get_lowest_layer(ws).expires_after(kHandshakeTimeout);
    if constexpr (std::is_same_v<Stream, beast::tcp_stream>) {
      Upgrade();
    } else {
      ws.next_layer().async_handshake(net::ssl::stream_base::server,
                                      [self = this->shared_from_this()](error_code error) {
                                        if (!error) self->Upgrade();
                                      });
    }
  }

  void Wake() override {
    if (upgraded) Continue();
  }

 private:
  struct Unsent {
    Outgoing message;
    Time due;
  };

  void Upgrade() {
    const Fault fault = state.FaultAt(Service::signalling, Step::tls);
    const std::chrono::milliseconds silence(state.switches.Get().silentMs);
    if (fault != Fault::silent || silence.count() == 0) return Meet(fault, [](auto& self) { self.AcceptUpgrade(); });
    wakeTimer.expires_after(silence);
    wakeTimer.async_wait([self = this->shared_from_this()](error_code error) {
      if (!error) self->AcceptUpgrade();
    });
  }

  // Goes on where nothing is to go wrong.
  template <class Next>
  void Meet(Fault fault, Next next) {
    switch (fault) {
      case Fault::none:
        return next(*this);
      case Fault::close:
        return Drop();
      case Fault::silent:
        return Vanish();
      case Fault::garbage:
        garbage = Garbage();
        net::async_write(ws.next_layer(), net::buffer(garbage),
                         [self = this->shared_from_this()](error_code, std::size_t) { self->Vanish(); });
    }
  }

  void AcceptUpgrade() {
    beast::get_lowest_layer(ws).expires_never();
    ws.set_option(websocket::stream_base::timeout{kHandshakeTimeout, kIdleTimeout, true});
    ws.read_message_max(kMaxMessage);
    ws.async_accept([self = this->shared_from_this()](error_code error) {
      if (!error) self->OnUpgraded();
    });
  }

  void OnUpgraded() {
    upgraded = true;
    state.observation.Change([this](CloudStats& stats) {
      ++stats.lines[line].ever;
      ++stats.lines[line].now;
    });
    state.observation.Event("line " + std::to_string(line) + ": connected");
    Meet(state.FaultAt(Service::signalling, Step::upgrade), [](auto& self) { self.Continue(); });
  }

  void Continue() {
    if (vanished) return;
    Send();
    Read();
    ScheduleWake();
  }

  bool IsHeldBack() const { return end != Reply::End::no || unsentBytes > kMaxUnsent; }

  void Read() {
    if (reading || IsHeldBack() || !conversation.IsReading()) return;
    reading = true;
    ws.async_read(buffer, [self = this->shared_from_this()](error_code error, std::size_t) {
      self->reading = false;
      self->OnRead(error);
    });
  }

  void OnRead(error_code error) {
    if (vanished) return;
    if (error) return Drop();
    const std::string message = beast::buffers_to_string(buffer.data());
    buffer.consume(buffer.size());
    Apply(ws.got_text() ? conversation.OnText(message, Now()) : conversation.OnBinary());
  }

  void Apply(Reply reply) {
    if (end != Reply::End::no) return;
    for (Outgoing& message : reply.messages) {
      unsentBytes += message.bytes.size();
      unsent.push_back(Unsent{std::move(message), Now() + state.options.delay + reply.after});
    }
    end = reply.end;
    Continue();
  }

  void ScheduleWake() {
    wakeTimer.cancel();
    if (IsHeldBack()) return;
    const std::optional<Time> next = conversation.NextWake();
    if (!next) return;
    wakeTimer.expires_after(std::max(Time(0), *next - Now()));
    wakeTimer.async_wait([self = this->shared_from_this()](error_code error) {
      if (!error) self->Apply(self->conversation.OnWake(Now()));
    });
  }

  void Send() {
    if (writing || dropped) return;
    if (unsent.empty()) return Finish();
    if (const Time early = unsent.front().due - Now(); early.count() > 0) {
      sendTimer.expires_after(early);
      sendTimer.async_wait([self = this->shared_from_this()](error_code error) {
        if (!error) self->Send();
      });
      return;
    }
    writing = true;
    ws.binary(unsent.front().message.binary);
    ws.async_write(net::buffer(unsent.front().message.bytes),
                   [self = this->shared_from_this()](error_code error, std::size_t) {
                     self->writing = false;
                     self->OnSent(error);
                   });
  }

  void OnSent(error_code error) {
    if (error) return Drop();
    unsentBytes -= unsent.front().message.bytes.size();
    unsent.pop_front();
    Continue();
  }

  // Ends the connection when everything has been sent and the conversation is over.
  void Finish() {
    if (end == Reply::End::drop) return Drop();
    if (end == Reply::End::vanish) return Vanish();
    if (end == Reply::End::no || closing) return;
    closing = true;
    ws.async_close(websocket::close_code::normal, [self = this->shared_from_this()](error_code) { self->Drop(); });
  }

  // As if the peer's machine were gone: nothing is read, pings included, and nothing closed.
  void Vanish() {
    vanished = true;
    beast::get_lowest_layer(ws).expires_never();
    auto& socket = beast::get_lowest_layer(ws).socket();
    error_code ignored;
    socket.cancel(ignored);
    HoldInSilence(socket, this->shared_from_this());
  }

  void Drop() {
    if (dropped) return;
    dropped = true;
    end = Reply::End::drop;
    sendTimer.cancel();
    wakeTimer.cancel();
    error_code ignored;
    auto& socket = beast::get_lowest_layer(ws).socket();
    // What has been sent still arrives, where closing alone may take it back.
    socket.shutdown(net::ip::tcp::socket::shutdown_send, ignored);
    beast::get_lowest_layer(ws).close();
    state.observation.Event("line " + std::to_string(line) + ": disconnected");
  }

  websocket::stream<Stream> ws;
  net::steady_timer sendTimer;
  net::steady_timer wakeTimer;
  State& state;
  const std::uint32_t line;
  Conversation conversation;

  beast::flat_buffer buffer;
  std::deque<Unsent> unsent;
  std::size_t unsentBytes = 0;
  Reply::End end = Reply::End::no;
  bool upgraded = false;
  bool reading = false;
  bool writing = false;
  bool closing = false;
  bool dropped = false;
  bool vanished = false;
  std::string garbage;
};

template <class Connection, class... Arguments>
std::weak_ptr<WsConnection> StartNew(Arguments&&... arguments) {
  const auto connection = std::make_shared<Connection>(std::forward<Arguments>(arguments)...);
  connection->Start();
  return connection;
}

}  // namespace

std::weak_ptr<WsConnection> ServeSignalling(net::ip::tcp::socket socket, net::ssl::context* tls, State& state,
                                            std::uint32_t line) {
  error_code ignored;
  socket.set_option(net::ip::tcp::no_delay(true), ignored);
  // So that a client which the cloud does not read notices it soon; but not below a few segments of the loopback, or
  // the line would stay stalled when reading goes on.
  if (state.switches.Get().stopReading) socket.set_option(net::socket_base::receive_buffer_size(128 * 1024), ignored);
  if (!tls) return StartNew<WsConnectionOver<beast::tcp_stream>>(std::move(socket), state, line);
  return StartNew<WsConnectionOver<beast::ssl_stream<beast::tcp_stream>>>(std::move(socket), state, line, *tls);
}

}  // namespace qv_cloud
