#include <json/json.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <type_traits>

#include "reference/ws_interface/message_codec.h"

namespace reference::ws {
namespace {

// Bytes of the UTF-8 sequence that text begins with, 0 when it begins with none.
std::size_t SequenceSize(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t first = byte(0);
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4) return 0;
  const std::size_t size = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (text.size() < size) return 0;
  // Overlong forms, surrogates and what lies past U+10FFFF show in the second byte.
  const std::uint8_t lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
  const std::uint8_t highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
  if (byte(1) < lowest || byte(1) > highest) return 0;
  for (std::size_t i = 2; i < size; ++i) {
    if (byte(i) < 0x80 || byte(i) > 0xBF) return 0;
  }
  return size;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t size = SequenceSize(text);
    if (size == 0) return false;
    text.remove_prefix(size);
  }
  return true;
}

std::string Compact(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  return Json::writeString(builder, value);
}

}  // namespace

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
  return Compact(json);
}

std::string EncodePlay(std::int32_t videoFormat, const ws_interface::WSVideoParam& video) {
  Json::Value json;
  json["type"] = "play";
  json["videoFormat"] = videoFormat;
  json["width"] = video.width;
  json["height"] = video.height;
  json["frameRate"] = video.frameRate;
  json["bitRate"] = video.bitRate;
  return Compact(json);
}

std::string EncodeSession(const std::string& sessionId) {
  Json::Value json;
  json["type"] = "session";
  json["sessionId"] = sessionId;
  return Compact(json);
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
