#include "reference/pass_interface/request_body.h"

#include <json/value.h>

#include "reference/common/compact_json.h"

namespace pass_interface {
namespace {

Json::Value WithIdentity(const Identity& identity) {
  Json::Value body(Json::objectValue);
  body["credential1"] = identity.credential1;
  body["credential2"] = identity.credential2;
  body["credential3"] = identity.credential3;
  body["version"] = identity.version;
  return body;
}

}  // namespace

std::string PhoneConnectBody(const Identity& identity, const char* targetId, const char* text1, const char* text2) {
  Json::Value body = WithIdentity(identity);
  body["targetId"] = targetId;
  body["text1"] = text1;
  body["text2"] = text2;
  return reference::CompactJson(body);
}

std::string RefreshSessionBody(const Identity& identity, const char* sessionId, const char* text, std::int32_t value) {
  Json::Value body = WithIdentity(identity);
  body["sessionId"] = sessionId;
  body["text"] = text;
  body["value"] = value;
  return reference::CompactJson(body);
}

}  // namespace pass_interface
