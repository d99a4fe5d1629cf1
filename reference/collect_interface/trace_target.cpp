#include "reference/collect_interface/trace_target.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>

#include "reference/common/path_text.h"
#include "reference/common/service_url.h"
#include "reference/common/settings.h"

namespace collect_interface {
namespace {

constexpr char kBadEndpoint[] =
    "QV_REFERENCE_OTLP_ENDPOINT is refused, it must be http(s)://host[:port][/path] without user, query and fragment";
constexpr char kBadHeaders[] =
    "QV_REFERENCE_OTLP_HEADERS is refused, it must be name=value,name=value with percent-encoded values";

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

bool IsNameCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == '.';
}

// "Name: value"; empty for what is no such pair, or would begin another line.
std::optional<std::string> HeaderLine(std::string_view pair) {
  const std::size_t equals = pair.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  const std::string_view name = Trimmed(pair.substr(0, equals));
  if (name.empty() || !std::all_of(name.begin(), name.end(), IsNameCharacter)) return std::nullopt;
  const std::string encoded(Trimmed(pair.substr(equals + 1)));
  if (encoded.empty()) return std::nullopt;
  int length = 0;
  const std::unique_ptr<char, void (*)(void*)> value(
      curl_easy_unescape(nullptr, encoded.c_str(), static_cast<int>(encoded.size()), &length), curl_free);
  if (!value) return std::nullopt;
  const std::string_view decoded(value.get(), static_cast<std::size_t>(length));
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7f; };
  if (std::any_of(decoded.begin(), decoded.end(), isControl)) return std::nullopt;
  return std::string(name) + ": " + std::string(decoded);
}

}  // namespace

TraceTarget CurrentTraceTarget() {
  TraceTarget target;
  const std::optional<reference::ServiceUrl> url = reference::ServiceUrl::Parse(reference::OtlpEndpoint().c_str());
  if (!url) {
    target.problem = kBadEndpoint;
    return target;
  }
  target.settings.authorityFile = reference::Utf8Text(reference::AuthorityFile());
  target.settings.proxy = reference::Proxy();
  const std::string headers = reference::OtlpHeaders();
  for (std::size_t begin = 0; begin < headers.size();) {
    const std::size_t end = std::min(headers.find(',', begin), headers.size());
    std::optional<std::string> line = HeaderLine(std::string_view(headers).substr(begin, end - begin));
    if (!line) {
      target.problem = kBadHeaders;
      return target;
    }
    target.settings.headers.push_back(std::move(*line));
    begin = end + 1;
  }
  target.host = url->Host();
  target.url = url->Join("v1/traces");
  return target;
}

}  // namespace collect_interface
