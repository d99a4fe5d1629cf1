// Where a connection goes, and the proxy on the way.
//
// Threads: values and pure functions. Ownership: values.
#ifndef REFERENCE_WS_INTERFACE_ENDPOINT_H
#define REFERENCE_WS_INTERFACE_ENDPOINT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace reference::ws {

struct Endpoint {
  bool secure = false;
  // Without the brackets of an IPv6 address.
  std::string host;
  std::uint16_t port = 0;
};

// What the two functions below accept, for the log line of a refusal.
inline constexpr const char* kWebSocketUrlForm =
    "\"ws://\" or \"wss://\", a domain, an IPv4 address or an IPv6 address in brackets, \":\", a port from 1 to 65535, "
    "and "
    "nothing else";
inline constexpr const char* kProxyUrlForm = "\"http://host:port\"";

std::optional<Endpoint> ParseWebSocketUrl(std::string_view url);
std::optional<Endpoint> ParseProxyUrl(std::string_view url);

// "host:port", an IPv6 address in brackets.
std::string Authority(const Endpoint& endpoint);
// For log lines.
std::string Url(const Endpoint& endpoint);

}  // namespace reference::ws

#endif
