#include <json/json.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>
#include <stdexcept>

#include "reference/common/utf8.h"
#include "reference/ws_interface/message_codec.h"

namespace reference::ws {
namespace {

// Thrown and caught in this file.
struct Fault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

enum class Kind { kText, kI32, kU16, kU32, kU64 };

struct Shape {
  std::uint32_t slot;
  std::size_t count;
  Kind arguments[6];
};

using enum Kind;
constexpr Shape kShapes[] = {
    {5, 0, {}},
    {6, 1, {kText}},
    {7, 0, {}},
    {8, 0, {}},
    {9, 5, {kU64, kU64, kU64, kU32, kU32}},
    {10, 0, {}},
    {11, 6, {kI32, kU64, kU16, kU32, kU16, kU16}},
    {12, 0, {}},
    {13, 4, {kU64, kU64, kU64, kU32}},
    {14, 0, {}},
    {23, 0, {}},
    {24, 0, {}},
    {25, 0, {}},
};

const Shape* FindShape(std::uint64_t slot) {
  const Shape* const found =
      std::find_if(std::begin(kShapes), std::end(kShapes), [&](const Shape& shape) { return shape.slot == slot; });
  return found == std::end(kShapes) ? nullptr : found;
}

std::uint64_t Largest(Kind kind) {
  switch (kind) {
    case kU16:
      return std::numeric_limits<std::uint16_t>::max();
    case kU32:
      return std::numeric_limits<std::uint32_t>::max();
    default:
      return std::numeric_limits<std::uint64_t>::max();
  }
}

// jsoncpp takes 1.0 for an integer too; a peer that sends it is not ours.
bool IsInteger(const Json::Value& value) {
  return value.type() == Json::intValue || value.type() == Json::uintValue;
}

std::uint64_t Number(const Json::Value& value, Kind kind, const std::string& name) {
  if (!IsInteger(value)) throw Fault(name + " is not an integer");
  if (kind == kI32) {
    if (!value.isInt()) throw Fault(name + " is not a signed 32-bit number");
    return static_cast<std::uint64_t>(std::int64_t{value.asInt()});
  }
  if (!value.isUInt64() || value.asUInt64() > Largest(kind)) {
    throw Fault(name + " is not in 0 to " + std::to_string(Largest(kind)));
  }
  return value.asUInt64();
}

std::string Text(const Json::Value& value, const std::string& name) {
  if (!value.isString()) throw Fault(name + " is not a text");
  std::string text = value.asString();
  if (text.size() > kMaxTextSize) throw Fault(name + " has more than " + std::to_string(kMaxTextSize) + " bytes");
  if (text.find('\0') != std::string::npos) throw Fault(name + " holds U+0000");
  if (!IsUtf8(text)) throw Fault(name + " is not UTF-8");
  return text;
}

const Json::Value& Required(const Json::Value& json, const char* key) {
  if (!json.isMember(key)) throw Fault(std::string(key) + " is missing");
  return json[key];
}

std::uint32_t RequiredU32(const Json::Value& json, const char* key) {
  return static_cast<std::uint32_t>(Number(Required(json, key), kU32, key));
}

std::string OptionalText(const Json::Value& json, const char* key) {
  return json.isMember(key) ? Text(json[key], key) : std::string();
}

const Json::Value& RequiredArray(const Json::Value& json, const char* key, std::size_t size) {
  const Json::Value& array = Required(json, key);
  if (!array.isArray()) throw Fault(std::string(key) + " is not an array");
  if (array.size() != size) {
    throw Fault(std::string(key) + " has " + std::to_string(array.size()) + " elements, expected " +
                std::to_string(size));
  }
  return array;
}

std::string ElementName(const char* array, std::size_t index) {
  return std::string(array) + "[" + std::to_string(index) + "]";
}

PlayAnswer DecodePlayAnswer(const Json::Value& json) {
  PlayAnswer answer;
  const Json::Value& values = RequiredArray(json, "values", answer.values.size());
  for (std::size_t i = 0; i < answer.values.size(); ++i) {
    const Kind kind = i == 1 ? kU64 : kU32;
    answer.values[i] = Number(values[static_cast<Json::ArrayIndex>(i)], kind, ElementName("values", i));
  }
  return answer;
}

Notice DecodeNotice(const Json::Value& json) {
  const Shape* const shape = FindShape(Number(Required(json, "slot"), kU64, "slot"));
  if (shape == nullptr) throw Fault("slot is not one of 5 to 14 and 23 to 25");
  const Json::Value& arguments = RequiredArray(json, "args", shape->count);
  Notice notice;
  notice.slot = shape->slot;
  for (std::size_t i = 0; i < shape->count; ++i) {
    const Json::Value& argument = arguments[static_cast<Json::ArrayIndex>(i)];
    const std::string name = ElementName("args", i);
    if (shape->arguments[i] == kText) {
      notice.text = Text(argument, name);
    } else {
      notice.numbers[i] = Number(argument, shape->arguments[i], name);
    }
  }
  return notice;
}

Json::Value Parse(std::string_view text) {
  if (text.size() > kMaxDocumentSize) throw Fault("more than " + std::to_string(kMaxDocumentSize) + " bytes");
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder["stackLimit"] = 16;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value json;
  if (!reader->parse(text.data(), text.data() + text.size(), &json, nullptr)) throw Fault("not JSON");
  if (!json.isObject()) throw Fault("not a JSON object");
  return json;
}

Incoming Decode(std::string_view text) {
  const Json::Value json = Parse(text);
  const std::string type = Text(Required(json, "type"), "type");
  if (type == "authRsp") {
    return AuthAnswer{RequiredU32(json, "code"), OptionalText(json, "message"), OptionalText(json, "formats")};
  }
  if (type == "playRsp") return DecodePlayAnswer(json);
  if (type == "notice") return DecodeNotice(json);
  if (type == "error") return CloudError{RequiredU32(json, "code"), OptionalText(json, "message")};
  throw Fault("type is not one of authRsp, playRsp, notice and error");
}

}  // namespace

Incoming DecodeMessage(std::string_view json) {
  try {
    return Decode(json);
  } catch (const Fault& fault) {
    return Malformed{fault.what()};
  } catch (const std::exception&) {
    // jsoncpp throws for what is nested too deeply.
    return Malformed{"not JSON that can be read"};
  }
}

void DeliverPlayAnswer(const PlayAnswer& answer, ws_interface::IWSInterfaceNotic& sink) {
  const auto u32 = [&](std::size_t i) { return static_cast<std::uint32_t>(answer.values[i]); };
  sink.OnPlayRsp(u32(0), answer.values[1], u32(2), u32(3), u32(4), u32(5), u32(6), u32(7), u32(8), u32(9));
}

void DeliverNotice(const Notice& notice, ws_interface::IWSInterfaceNotic& sink) {
  const auto u64 = [&](std::size_t i) { return notice.numbers[i]; };
  const auto u32 = [&](std::size_t i) { return static_cast<std::uint32_t>(notice.numbers[i]); };
  const auto u16 = [&](std::size_t i) { return static_cast<std::uint16_t>(notice.numbers[i]); };
  switch (notice.slot) {
    case 5:
      return sink.OnNotice5();
    case 6:
      return sink.OnNotice6(notice.text.c_str());
    case 7:
      return sink.OnNotice7();
    case 8:
      return sink.OnNotice8();
    case 9:
      return sink.OnNotice9(u64(0), u64(1), u64(2), u32(3), u32(4));
    case 10:
      return sink.OnNotice10();
    case 11:
      return sink.OnVideoParamRsp(static_cast<std::int32_t>(u32(0)), u64(1), u16(2), u32(3), u16(4), u16(5));
    case 12:
      return sink.OnNotice12();
    case 13:
      return sink.OnNotice13(u64(0), u64(1), u64(2), u32(3));
    case 14:
      return sink.OnNotice14();
    case 23:
      return sink.OnNotice23();
    case 24:
      return sink.OnNotice24();
    case 25:
      return sink.OnNotice25();
    default:
      return;
  }
}

std::optional<ws_interface::WSVideoParam> VideoParamInForce(const Notice& notice) {
  if (notice.slot != 11 || notice.numbers[0] != 0) return std::nullopt;
  ws_interface::WSVideoParam video{};
  video.frameRate = static_cast<std::uint16_t>(notice.numbers[2]);
  video.bitRate = static_cast<std::uint32_t>(notice.numbers[3]);
  video.width = static_cast<std::uint16_t>(notice.numbers[4]);
  video.height = static_cast<std::uint16_t>(notice.numbers[5]);
  return video;
}

std::optional<VideoFrame> DecodeVideoFrame(std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kHeaderSize = 20;
  if (bytes.size() < kHeaderSize) return std::nullopt;
  const auto bigEndian = [&](std::size_t offset, std::size_t size) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes.subspan(offset, size)) value = value << 8 | byte;
    return value;
  };
  const VideoFrame frame{bigEndian(0, 8), bigEndian(8, 8), static_cast<std::uint32_t>(bigEndian(16, 4)),
                         bytes.size() - kHeaderSize};
  if (frame.format != 264 && frame.format != 265) return std::nullopt;
  return frame;
}

}  // namespace reference::ws
