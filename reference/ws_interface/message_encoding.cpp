#include <json/json.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <type_traits>

#include "reference/common/compact_json.h"
#include "reference/common/utf8.h"
#include "reference/ws_interface/message_codec.h"

namespace reference::ws {
ResultCode CheckText(const char* text) {
  if (text == nullptr) return kBadArgument;
  const void* const end = std::memchr(text, '\0', kMaxTextSize + 1);
  if (end == nullptr) return kTextTooLong;
  return IsUtf8(std::string_view(text, static_cast<const char*>(end))) ? kTaken : kBadArgument;
}

std::string EncodeAuth(const AuthRequest& request) {
  Json::Value json;
  json["type"] = "auth";
  json["credential1"] = request.credential1;
  json["sessionId"] = request.sessionId;
  json["targetId"] = request.targetId;
  json["version"] = request.version;
  json["clientKind"] = request.clientKind;
  json["initNumber"] = request.initNumber;
  json["streamKind"] = request.streamKind;
  return CompactJson(json);
}

std::string EncodePlay(std::int32_t videoFormat, const ws_interface::WSVideoParam& video) {
  Json::Value json;
  json["type"] = "play";
  json["videoFormat"] = videoFormat;
  json["width"] = video.width;
  json["height"] = video.height;
  json["frameRate"] = video.frameRate;
  json["bitRate"] = video.bitRate;
  return CompactJson(json);
}

std::string EncodeSession(const std::string& sessionId) {
  Json::Value json;
  json["type"] = "session";
  json["sessionId"] = sessionId;
  return CompactJson(json);
}

CommandWriter::CommandWriter(int slot) {
  // Room for eight floats, so that a command without texts allocates once.
  json.reserve(192);
  json += R"({"type":"command","slot":)";
  json += std::to_string(slot);
  json += R"(,"args":[)";
}

void CommandWriter::Add(std::int32_t value) {
  AddNumber(value);
}

void CommandWriter::Add(std::uint64_t value) {
  AddNumber(value);
}

void CommandWriter::Add(float value) {
  if (!std::isfinite(value)) {
    result = kBadArgument;
    return;
  }
  AddNumber(value);
}

void CommandWriter::Add(const char* text) {
  const ResultCode check = CheckText(text);
  if (check != kTaken) {
    result = check;
    return;
  }
  Separate();
  json += Json::valueToQuotedString(text);
}

std::string CommandWriter::Take() {
  json += "]}";
  return std::move(json);
}

void CommandWriter::Separate() {
  if (!empty) json += ',';
  empty = false;
}

template <class Number>
void CommandWriter::AddNumber(Number value) {
  Separate();
  // The shortest text that reads back equal, whatever the locale.
  char digits[32];
  const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), value);
  static_cast<void>(error);
  json.append(digits, end);
}

}  // namespace reference::ws
