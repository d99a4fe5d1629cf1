#include "bench/bare_client.h"

#include <curl/curl.h>
#include <json/json.h>

#include <boost/asio/awaitable.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <exception>
#include <memory>
#include <stdexcept>

#include "reference/common/settings.h"

namespace bench {
namespace {

namespace net = boost::asio;
namespace beast = boost::beast;
using net::use_awaitable;
using net::ip::tcp;

constexpr char kBody[] = R"({"credential1":"user","credential2":"device","credential3":"token","targetId":"phone-1",)"
                         R"("text1":"","text2":"","version":"1.13.0"})";
constexpr char kPlay[] = R"({"type":"play","videoFormat":264,"width":720,"height":1280,"frameRate":0,"bitRate":2048})";

std::size_t Append(char* bytes, std::size_t size, std::size_t count, void* text) {
  static_cast<std::string*>(text)->append(bytes, size * count);
  return size * count;
}

net::awaitable<void> Run(net::io_context& io, const BareSession& session, reference::ws::TlsTrust& trust) {
  const auto tls = trust.Context();
  beast::websocket::stream<beast::ssl_stream<beast::tcp_stream>> stream(io, *tls);
  reference::ws::ExpectHost(stream.next_layer().native_handle(), session.host);
  tcp::resolver resolver(io);
  const auto addresses = co_await resolver.async_resolve(session.host, std::to_string(session.port),
                                                         tcp::resolver::numeric_service, use_awaitable);
  co_await beast::get_lowest_layer(stream).async_connect(addresses, use_awaitable);
  beast::get_lowest_layer(stream).socket().set_option(tcp::no_delay(true));
  co_await stream.next_layer().async_handshake(net::ssl::stream_base::client, use_awaitable);
  co_await stream.async_handshake(session.host + ":" + std::to_string(session.port), "/", use_awaitable);

  const std::string auth = R"({"type":"auth","credential1":"user","sessionId":")" + session.sessionId +
                           R"(","targetId":"phone-1","version":"1.13.0","clientKind":3,"initNumber":0,"streamKind":2})";
  beast::flat_buffer buffer;
  stream.text(true);
  co_await stream.async_write(net::buffer(auth), use_awaitable);
  co_await stream.async_read(buffer, use_awaitable);
  co_await stream.async_write(net::buffer(kPlay, sizeof kPlay - 1), use_awaitable);
  // The answer to play, then the frame.
  do {
    buffer.clear();
    co_await stream.async_read(buffer, use_awaitable);
  } while (stream.got_text());
}

}  // namespace

BareSession RequestSession(const std::string& baseUrl) {
  const std::unique_ptr<CURL, void (*)(CURL*)> easy(curl_easy_init(), &curl_easy_cleanup);
  const std::unique_ptr<curl_slist, void (*)(curl_slist*)> headers(
      curl_slist_append(nullptr, "Content-Type: application/json"), &curl_slist_free_all);
  const std::string url = baseUrl + "/v1/phone-connect";
  const std::string authority = reference::AuthorityFile().string();
  std::string answer;
  const auto set = [&](CURLoption option, auto value) { curl_easy_setopt(easy.get(), option, value); };
  set(CURLOPT_URL, url.c_str());
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_PROXY, "");
  set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  set(CURLOPT_CAINFO, authority.c_str());
  set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
  set(CURLOPT_POSTFIELDS, kBody);
  set(CURLOPT_HTTPHEADER, headers.get());
  set(CURLOPT_WRITEFUNCTION, &Append);
  set(CURLOPT_WRITEDATA, &answer);
  if (curl_easy_perform(easy.get()) != CURLE_OK) throw std::runtime_error("the bare request fails");

  Json::Value root;
  if (!Json::Reader().parse(answer, root)) throw std::runtime_error("the answer is not JSON");
  const Json::Value& streams = root["data"]["streamInfo"];
  return {root["data"]["sessionId"].asString(), streams["webSocketDomain"].asString(),
          static_cast<std::uint16_t>(streams["webSocketPort"].asInt())};
}

void ToFirstFrame(const BareSession& session, reference::ws::TlsTrust& trust) {
  net::io_context io(1);
  std::exception_ptr failure;
  net::co_spawn(io, Run(io, session, trust), [&](std::exception_ptr thrown) { failure = thrown; });
  io.run();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace bench
