#include "reference/pass_interface/answer_parser.h"

#include <json/reader.h>
#include <json/value.h>

#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <stdexcept>
#include <utility>

#include "reference/common/utf8.h"
#include "reference/pass_interface/pass_result.h"

namespace pass_interface {
namespace {

constexpr int kMaximumDepth = 32;
constexpr std::int32_t kMinimumInt32 = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMaximumInt32 = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t kMaximumInt64 = std::numeric_limits<std::int64_t>::max();

// Never leaves this file.
class Malformed : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class Presence { kOptional, kRequired };
using enum Presence;

template <class Int>
Int CheckedInteger(const Json::Value& value, const std::string& path, Int minimum, Int maximum) {
  const std::string range = "between " + std::to_string(minimum) + " and " + std::to_string(maximum);
  if (!value.isIntegral()) throw Malformed(path + ": must be an integer " + range);
  if (!value.isInt64() || value.asInt64() < minimum || value.asInt64() > maximum) {
    throw Malformed(path + ": " + value.asString() + " is not " + range);
  }
  return static_cast<Int>(value.asInt64());
}

// One JSON object and the path to it, for the messages. A key that is absent leaves the field alone when optional.
class ObjectReader {
 public:
  ObjectReader(const Json::Value& value, std::string path) : object(value), path(std::move(path)) {
    if (!object.isObject()) throw Malformed((this->path.empty() ? "the answer" : this->path) + ": must be an object");
  }

  void Text(const char* key, Presence presence, std::string& field, std::size_t maximum = kMaximumTextBytes) const {
    const Json::Value* value = Find(key, presence);
    if (value == nullptr) return;
    if (!value->isString()) throw Malformed(PathOf(key) + ": must be a text");
    std::string text = value->asString();
    if (text.size() > maximum) {
      throw Malformed(PathOf(key) + ": " + std::to_string(text.size()) + " bytes are more than " +
                      std::to_string(maximum));
    }
    if (text.find('\0') != std::string::npos) throw Malformed(PathOf(key) + ": must not hold a NUL character");
    if (!reference::IsUtf8(text)) throw Malformed(PathOf(key) + ": must be UTF-8");
    field = std::move(text);
  }

  // A required text without which the answer is of no use.
  void NonEmptyText(const char* key, std::string& field, std::size_t maximum = kMaximumTextBytes) const {
    Text(key, kRequired, field, maximum);
    if (field.empty()) throw Malformed(PathOf(key) + ": must not be empty");
  }

  template <class Int>
  void Integer(const char* key, Presence presence, Int minimum, Int maximum, Int& field) const {
    const Json::Value* value = Find(key, presence);
    if (value != nullptr) field = CheckedInteger(*value, PathOf(key), minimum, maximum);
  }

  void Boolean(const char* key, bool& field) const {
    const Json::Value* value = Find(key, kOptional);
    if (value == nullptr) return;
    if (!value->isBool()) throw Malformed(PathOf(key) + ": must be true or false");
    field = value->asBool();
  }

  // Calls element(value, path) for each element in order.
  template <class Element>
  void List(const char* key, std::size_t maximum, const Element& element) const {
    const Json::Value* value = Find(key, kOptional);
    if (value == nullptr) return;
    if (!value->isArray()) throw Malformed(PathOf(key) + ": must be a list");
    if (value->size() > maximum) {
      throw Malformed(PathOf(key) + ": " + std::to_string(value->size()) + " elements are more than " +
                      std::to_string(maximum));
    }
    for (Json::ArrayIndex i = 0; i < value->size(); ++i) {
      element((*value)[i], PathOf(key) + "[" + std::to_string(i) + "]");
    }
  }

  ObjectReader Object(const char* key) const { return {*Find(key, kRequired), PathOf(key)}; }

 private:
  const Json::Value* Find(const std::string& key, Presence presence) const {
    const Json::Value* value = object.find(key.data(), key.data() + key.size());
    if (value == nullptr && presence == kRequired) throw Malformed(PathOf(key) + ": is missing");
    return value;
  }

  std::string PathOf(const std::string& key) const { return path.empty() ? key : path + "." + key; }

  const Json::Value& object;
  const std::string path;
};

Json::Value ParseDocument(std::string_view text) {
  if (text.size() > kMaximumAnswerBytes) {
    throw Malformed("the answer: " + std::to_string(text.size()) + " bytes are more than " +
                    std::to_string(kMaximumAnswerBytes));
  }
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder["stackLimit"] = kMaximumDepth;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value document;
  std::string errors;
  if (!reader->parse(text.data(), text.data() + text.size(), &document, &errors)) {
    // The first line says where; what follows may quote the document.
    const std::size_t lineEnd = errors.find('\n');
    const bool located = errors.starts_with("* ") && lineEnd != std::string::npos;
    throw Malformed("the answer: is not JSON" + (located ? " at " + errors.substr(2, lineEnd - 2) : std::string()));
  }
  return document;
}

// The part that both answers share. Says whether the service granted.
template <class Answer>
bool ReadHeader(const ObjectReader& root, Answer& answer) {
  root.Text("requestTag", kOptional, answer.requestTag);
  root.Integer("code", kRequired, kMinimumInt32, kMaximumInt32, answer.code);
  root.Text("message", kOptional, answer.message);
  return answer.code == 0;
}

void ReadEndpoints(const ObjectReader& object, StreamEndpoints& endpoints) {
  object.Text("tcpDomain", kOptional, endpoints.tcpDomain);
  object.Integer("tcpPort", kOptional, 0, 65535, endpoints.tcpPort);
  object.Text("udpDomain", kOptional, endpoints.udpDomain);
  object.Integer("udpPort", kOptional, 0, 65535, endpoints.udpPort);
  object.NonEmptyText("webSocketDomain", endpoints.webSocketDomain);
  object.Integer("webSocketPort", kRequired, 1, 65535, endpoints.webSocketPort);
}

SubStreamInfo ReadLine(const ObjectReader& object) {
  SubStreamInfo line;
  object.Integer("ispCode", kRequired, kMinimumInt32, kMaximumInt32, line.ispCode);
  object.Text("label", kRequired, line.label);
  ReadEndpoints(object, line.endpoints);
  return line;
}

void Read(const ObjectReader& root, InstanceInfo& answer) {
  if (!ReadHeader(root, answer)) return;
  const ObjectReader data = root.Object("data");
  data.NonEmptyText("sessionId", answer.sessionId, kMaximumSessionBytes);
  data.Text("instanceNo", kOptional, answer.instanceNo);
  data.Text("userId", kOptional, answer.userId);
  data.Text("appPackage", kOptional, answer.appPackage);
  data.Integer("sessionSignExpireTime", kRequired, std::int64_t{0}, kMaximumInt64, answer.sessionSignExpireTime);
  data.Integer("sessionExpireTime", kRequired, std::int64_t{0}, kMaximumInt64, answer.sessionExpireTime);
  ReadEndpoints(data.Object("streamInfo"), answer.endpoints);
  data.List("subStreamInfoList", kMaximumLines, [&answer](const Json::Value& value, const std::string& path) {
    answer.subStreamInfoList.push_back(ReadLine({value, path}));
  });
  data.List("streamStrategyList", kMaximumStrategies, [&answer](const Json::Value& value, const std::string& path) {
    answer.streamStrategyList.push_back(CheckedInteger(value, path, kMinimumInt32, kMaximumInt32));
  });
  data.Text("gCtrlNodeNo", kOptional, answer.gCtrlNodeNo);
  data.Boolean("preemption", answer.preemption);
}

void Read(const ObjectReader& root, RefreshSessionRsp& answer) {
  if (ReadHeader(root, answer)) root.Object("data").NonEmptyText("sessionId", answer.sessionId, kMaximumSessionBytes);
}

// What is wrong with the text; nothing when it was read.
template <class Answer>
std::string ReadFault(std::string_view text, Answer& answer) {
  try {
    const Json::Value document = ParseDocument(text);
    Read(ObjectReader(document, ""), answer);
    return {};
  } catch (const Malformed& malformed) {
    return malformed.what();
  } catch (const Json::Exception&) {
    // jsoncpp throws when the document is nested too deeply. Its message is not passed on: it may quote the document.
    return "the answer: is not JSON, or is nested more than " + std::to_string(kMaximumDepth) + " levels deep";
  }
}

template <class Answer>
bool Parse(std::string_view text, Answer& answer, std::string& problem) noexcept {
  Answer read;
  try {
    problem = ReadFault(text, read);
    if (problem.empty()) {
      answer = std::move(read);
      return true;
    }
  } catch (const std::exception&) {
    // Short enough to need none.
    problem = "out of memory";
  }
  answer = Answer();
  answer.requestTag = std::move(read.requestTag);
  return false;
}

}  // namespace

bool ParsePhoneConnectAnswer(std::string_view text, InstanceInfo& answer, std::string& problem) noexcept {
  return Parse(text, answer, problem);
}

bool ParseRefreshSessionAnswer(std::string_view text, RefreshSessionRsp& answer, std::string& problem) noexcept {
  return Parse(text, answer, problem);
}

}  // namespace pass_interface
