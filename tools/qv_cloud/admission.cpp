#include "tools/qv_cloud/admission.h"

#include <openssl/bio.h>
#include <openssl/ssl.h>

#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <chrono>
#include <stdexcept>
#include <utility>

namespace qv_cloud {
namespace {

namespace net = boost::asio;
using boost::system::error_code;

constexpr auto kLongestSilence = std::chrono::minutes(1);

class Silence : public std::enable_shared_from_this<Silence> {
 public:
  Silence(net::ip::tcp::socket& socket, std::shared_ptr<void> owner)
      : owner(std::move(owner)), socket(socket), timer(socket.get_executor()) {}

  void Begin() {
    timer.expires_after(kLongestSilence);
    timer.async_wait([self = this->shared_from_this()](error_code error) {
      error_code ignored;
      if (!error) self->socket.close(ignored);
    });
    Read();
  }

 private:
  void Read() {
    socket.async_read_some(net::buffer(bytes), [self = this->shared_from_this()](error_code error, std::size_t) {
      if (!error) return self->Read();
      self->timer.cancel();
    });
  }

  const std::shared_ptr<void> owner;
  net::ip::tcp::socket& socket;
  net::steady_timer timer;
  std::array<char, 4096> bytes{};
};

// What the server answers to the first bytes of a TLS client; empty when it would answer nothing yet.
std::string AnswerToHello(SSL_CTX* context, const char* hello, std::size_t size) {
  const std::unique_ptr<SSL, decltype(&SSL_free)> tls(SSL_new(context), &SSL_free);
  BIO* const in = BIO_new(BIO_s_mem());
  BIO* const out = BIO_new(BIO_s_mem());
  if (!tls || in == nullptr || out == nullptr) throw std::runtime_error("out of memory for TLS");
  SSL_set_bio(tls.get(), in, out);
  BIO_write(in, hello, static_cast<int>(size));
  SSL_accept(tls.get());
  const char* answer = nullptr;
  const long length = BIO_get_mem_data(out, &answer);
  return std::string(answer, static_cast<std::size_t>(length));
}

class Admission : public std::enable_shared_from_this<Admission> {
 public:
  Admission(net::ip::tcp::socket given, net::ssl::context* tls, State& state)
      : socket(std::move(given)), timer(socket.get_executor()), tls(tls), state(state) {}

  void Decide(Service service, Serve serve) {
    if (!Meet(state.FaultAt(service, Step::accept), &serve)) return;
    const Fault atHello = tls != nullptr ? state.FaultAt(service, Step::hello) : Fault::none;
    if (atHello == Fault::none) return serve(std::move(socket));
    socket.async_read_some(net::buffer(hello),
                           [self = shared_from_this(), atHello](error_code error, std::size_t size) {
                             if (!error) self->AnswerHalf(size, atHello);
                           });
  }

 private:
  // Says whether nothing is to go wrong. later: what happens when a silence ends.
  bool Meet(Fault fault, const Serve* later) {
    switch (fault) {
      case Fault::none:
        return true;
      case Fault::close:
        break;
      case Fault::garbage:
        Send(Garbage(), Fault::silent);
        break;
      case Fault::silent:
        const std::chrono::milliseconds length(state.switches.Get().silentMs);
        if (later == nullptr || length.count() == 0) {
          HoldInSilence(socket, shared_from_this());
          break;
        }
        timer.expires_after(length);
        timer.async_wait([self = shared_from_this(), serve = *later](error_code error) {
          if (!error) serve(std::move(self->socket));
        });
    }
    return false;
  }

  void AnswerHalf(std::size_t size, Fault fault) {
    std::string answer = AnswerToHello(tls->native_handle(), hello.data(), size);
    answer.resize(answer.size() / 2);
    if (fault == Fault::garbage) answer += Garbage();
    Send(std::move(answer), fault == Fault::garbage ? Fault::silent : fault);
  }

  void Send(std::string text, Fault then) {
    bytes = std::move(text);
    net::async_write(socket, net::buffer(bytes), [self = shared_from_this(), then](error_code error, std::size_t) {
      if (!error) self->Meet(then, nullptr);
    });
  }

  net::ip::tcp::socket socket;
  net::steady_timer timer;
  net::ssl::context* const tls;
  State& state;
  std::array<char, 4096> hello{};
  std::string bytes;
};

}  // namespace

void Admit(net::ip::tcp::socket socket, Service service, net::ssl::context* tls, State& state, Serve serve) {
  std::make_shared<Admission>(std::move(socket), tls, state)->Decide(service, std::move(serve));
}

void HoldInSilence(net::ip::tcp::socket& socket, std::shared_ptr<void> owner) {
  std::make_shared<Silence>(socket, std::move(owner))->Begin();
}

std::string Garbage() {
  std::string text;
  for (int line = 0; line < 1024; ++line) text += "garbage\n";
  return text;
}

}  // namespace qv_cloud
