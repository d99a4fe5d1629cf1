#include "reference/common/service_url.h"

#include <curl/curl.h>

#include <memory>

namespace reference {
namespace {

struct UrlDeleter {
  void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

// Empty when the URL lacks the part.
std::string Part(CURLU* url, CURLUPart part) {
  char* text = nullptr;
  if (curl_url_get(url, part, &text, 0) != CURLUE_OK) return {};
  const std::unique_ptr<char, void (*)(void*)> held(text, curl_free);
  return text;
}

}  // namespace

std::optional<ServiceUrl> ServiceUrl::Parse(const char* text) {
  const std::unique_ptr<CURLU, UrlDeleter> url(curl_url());
  if (!url || curl_url_set(url.get(), CURLUPART_URL, text, 0) != CURLUE_OK) return std::nullopt;
  const std::string scheme = Part(url.get(), CURLUPART_SCHEME);
  if (scheme != "http" && scheme != "https") return std::nullopt;
  for (const CURLUPart refused : {CURLUPART_USER, CURLUPART_PASSWORD, CURLUPART_QUERY, CURLUPART_FRAGMENT}) {
    if (!Part(url.get(), refused).empty()) return std::nullopt;
  }

  ServiceUrl result;
  result.host = Part(url.get(), CURLUPART_HOST);
  if (const std::string port = Part(url.get(), CURLUPART_PORT); !port.empty()) result.host += ":" + port;
  result.base = Part(url.get(), CURLUPART_URL);
  while (!result.base.empty() && result.base.back() == '/') result.base.pop_back();
  return result;
}

}  // namespace reference
