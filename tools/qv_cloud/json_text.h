// Reading JSON that cannot be trusted, with the limits that docs/reference-protocol.md sets, and writing it.
//
// Threads: pure functions. Ownership: values are copied.
#ifndef QV_CLOUD_JSON_TEXT_H
#define QV_CLOUD_JSON_TEXT_H

#include <json/value.h>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qv_cloud {

// What is wrong with a message or request.
class Malformed : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// REQUIRES of each reading function: the document is an object. They throw Malformed.
Json::Value ParseObject(std::string_view text);
std::string ReadText(const Json::Value& object, const char* key);
std::string ReadTextOr(const Json::Value& object, const char* key, const char* otherwise);
std::uint64_t ReadUnsigned(const Json::Value& object, const char* key, std::uint64_t max);

template <class Unsigned>
Unsigned ReadUnsigned(const Json::Value& object, const char* key) {
  return static_cast<Unsigned>(ReadUnsigned(object, key, std::numeric_limits<Unsigned>::max()));
}

void RequireText(const Json::Value& value, const char* name);

std::string WriteCompact(const Json::Value& value);

}  // namespace qv_cloud

#endif
