// The base URL of a service, taken apart once.
//
// Threads: constant after Parse. Ownership: a value.
#ifndef REFERENCE_COMMON_SERVICE_URL_H
#define REFERENCE_COMMON_SERVICE_URL_H

#include <optional>
#include <string>

namespace reference {

class ServiceUrl {
 public:
  // Takes http(s)://host[:port][/path]; empty for anything else. A user name in the URL is refused too, so that no URL
  // carries a secret.
  static std::optional<ServiceUrl> Parse(const char* text);

  // path: without a slash in front.
  std::string Join(const char* path) const { return base + "/" + path; }
  // With the port where one is given; for log lines.
  const std::string& Host() const { return host; }

 private:
  std::string base;
  std::string host;
};

}  // namespace reference

#endif
