#include "reference/ws_interface/endpoint.h"

#include <algorithm>
#include <charconv>

namespace reference::ws {
namespace {

constexpr std::size_t kMaxHostSize = 253;

bool TakePrefix(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

bool IsAlphanumeric(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool ConsistsOf(std::string_view text, std::string_view punctuation) {
  return !text.empty() && text.size() <= kMaxHostSize && std::all_of(text.begin(), text.end(), [&](char c) {
    return IsAlphanumeric(c) || punctuation.find(c) != std::string_view::npos;
  });
}

bool ParsePort(std::string_view text, std::uint16_t& port) {
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, port);
  return error == std::errc() && stopped == end && port != 0;
}

std::optional<Endpoint> ParseAuthority(std::string_view text, bool secure) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos) return std::nullopt;
  Endpoint endpoint;
  endpoint.secure = secure;
  if (!ParsePort(text.substr(colon + 1), endpoint.port)) return std::nullopt;

  std::string_view host = text.substr(0, colon);
  const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
  if (bracketed) host = host.substr(1, host.size() - 2);
  if (!ConsistsOf(host, bracketed ? ":.%" : "-._")) return std::nullopt;
  if (bracketed && host.find(':') == std::string_view::npos) return std::nullopt;
  endpoint.host = host;
  return endpoint;
}

}  // namespace

std::optional<Endpoint> ParseWebSocketUrl(std::string_view url) {
  if (TakePrefix(url, "wss://")) return ParseAuthority(url, true);
  if (TakePrefix(url, "ws://")) return ParseAuthority(url, false);
  return std::nullopt;
}

std::optional<Endpoint> ParseProxyUrl(std::string_view url) {
  if (!TakePrefix(url, "http://")) return std::nullopt;
  if (url.ends_with('/')) url.remove_suffix(1);
  return ParseAuthority(url, false);
}

std::string Authority(const Endpoint& endpoint) {
  const bool isV6 = endpoint.host.find(':') != std::string::npos;
  return (isV6 ? "[" + endpoint.host + "]" : endpoint.host) + ":" + std::to_string(endpoint.port);
}

std::string Url(const Endpoint& endpoint) {
  return (endpoint.secure ? "wss://" : "ws://") + Authority(endpoint);
}

}  // namespace reference::ws
