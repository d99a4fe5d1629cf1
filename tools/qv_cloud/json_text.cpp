#include "tools/qv_cloud/json_text.h"

#include <json/reader.h>
#include <json/writer.h>

#include <memory>

namespace qv_cloud {
namespace {

constexpr std::size_t kMaxText = 4096;
constexpr int kMaxDepth = 16;

}  // namespace

Json::Value ParseObject(std::string_view text) {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder["stackLimit"] = kMaxDepth;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value document;
  std::string errors;
  bool parsed = false;
  try {
    parsed = reader->parse(text.data(), text.data() + text.size(), &document, &errors);
  } catch (const Json::Exception&) {
    // Nested too deeply.
  }
  if (!parsed || !document.isObject()) throw Malformed("not a JSON object");
  return document;
}

void RequireText(const Json::Value& value, const char* name) {
  if (!value.isString()) throw Malformed(std::string(name) + " must be a text");
  const char* begin = nullptr;
  const char* end = nullptr;
  value.getString(&begin, &end);
  if (static_cast<std::size_t>(end - begin) > kMaxText) {
    throw Malformed(std::string(name) + " is longer than " + std::to_string(kMaxText) + " bytes");
  }
}

std::string ReadText(const Json::Value& object, const char* key) {
  RequireText(object[key], key);
  return object[key].asString();
}

std::string ReadTextOr(const Json::Value& object, const char* key, const char* otherwise) {
  return object.isMember(key) ? ReadText(object, key) : otherwise;
}

std::uint64_t ReadUnsigned(const Json::Value& object, const char* key, std::uint64_t max) {
  const Json::Value& value = object[key];
  if (!value.isUInt64() || value.asUInt64() > max) {
    throw Malformed(std::string(key) + " must be an integer from 0 to " + std::to_string(max));
  }
  return value.asUInt64();
}

std::string WriteCompact(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = true;
  return Json::writeString(builder, value);
}

}  // namespace qv_cloud
