#include "session/instance_info_codec.h"

#include <json/json.h>

#include <memory>
#include <sstream>

#include "surface/log.h"

namespace qv_data_interface {
namespace {

using pass_interface::InstanceInfo;
using pass_interface::StreamEndpoints;
using pass_interface::SubStreamInfo;

// A value that is no object has no members; jsoncpp would throw.
const Json::Value& Member(const Json::Value& object, const char* key) {
  return object.isObject() ? object[key] : Json::Value::nullSingleton();
}

bool Read(const Json::Value& object, const char* key, std::string& text) {
  const Json::Value& value = Member(object, key);
  if (!value.isString()) return false;
  text = value.asString();
  return true;
}

bool Read(const Json::Value& object, const char* key, std::int32_t& number) {
  const Json::Value& value = Member(object, key);
  if (!value.isInt()) return false;
  number = value.asInt();
  return true;
}

bool Read(const Json::Value& object, const char* key, std::int64_t& number) {
  const Json::Value& value = Member(object, key);
  if (!value.isInt64()) return false;
  number = value.asInt64();
  return true;
}

bool Read(const Json::Value& object, const char* key, bool& flag) {
  const Json::Value& value = Member(object, key);
  if (!value.isBool()) return false;
  flag = value.asInt() != 0;
  return true;
}

template <class Field>
bool ReadRequired(const Json::Value& object, const char* owner, const char* key, Field& field) {
  if (Read(object, key, field)) return true;
  QV_LOG(kLogError, "[QV_DATA_INTERFACE]Json Get [%s][%s] failed", owner, key);
  return false;
}

bool ReadEndpoints(const Json::Value& object, const char* owner, StreamEndpoints& endpoints) {
  Read(object, "tcpDomain", endpoints.tcpDomain);
  Read(object, "tcpPort", endpoints.tcpPort);
  Read(object, "udpDomain", endpoints.udpDomain);
  Read(object, "udpPort", endpoints.udpPort);
  return ReadRequired(object, owner, "webSocketDomain", endpoints.webSocketDomain) &&
         ReadRequired(object, owner, "webSocketPort", endpoints.webSocketPort);
}

bool ReadSubStream(const Json::Value& object, SubStreamInfo& line) {
  constexpr char kOwner[] = "subStreamInfoList";
  return ReadRequired(object, kOwner, "ispCode", line.ispCode) && ReadRequired(object, kOwner, "label", line.label) &&
         ReadEndpoints(object, kOwner, line.endpoints);
}

void ReadStrategies(const Json::Value& list, std::vector<std::int32_t>& strategies) {
  if (!list.isArray()) return;
  for (const Json::Value& element : list) {
    // An element that is no number at all is passed over; jsoncpp would throw.
    if (element.isConvertibleTo(Json::intValue)) strategies.push_back(element.asInt());
  }
}

bool ReadSubStreams(const Json::Value& list, std::vector<SubStreamInfo>& lines) {
  if (!list.isArray()) return true;
  lines.resize(list.size());
  for (Json::ArrayIndex i = 0; i < list.size(); ++i) {
    if (!ReadSubStream(list[i], lines[i])) return false;
  }
  return true;
}

bool ReadRoot(const Json::Value& root, InstanceInfo& info) {
  if (!ReadRequired(root, "root", "sessionId", info.sessionId)) return false;
  Read(root, "instanceNo", info.instanceNo);
  Read(root, "userId", info.userId);
  Read(root, "appPackage", info.appPackage);
  Read(root, "sessionSignExpireTime", info.sessionSignExpireTime);
  Read(root, "sessionExpireTime", info.sessionExpireTime);
  Read(root, "gCtrlNodeNo", info.gCtrlNodeNo);
  Read(root, "preemption", info.preemption);

  const Json::Value& streamInfo = Member(root, "streamInfo");
  if (!streamInfo.isObject()) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE]Json Get streamInfo failed");
    return false;
  }
  if (!ReadEndpoints(streamInfo, "streamInfo", info.endpoints)) return false;
  ReadStrategies(Member(root, "streamStrategyList"), info.streamStrategyList);
  return ReadSubStreams(Member(root, "subStreamInfoList"), info.subStreamInfoList);
}

// False too for a text nested so deeply that jsoncpp gives up with an exception.
bool ParseText(const char* json, Json::Value& root) {
  try {
    Json::Reader reader;
    return reader.parse(std::string(json), root);
  } catch (const Json::Exception&) {
    return false;
  }
}

void WriteEndpoints(const StreamEndpoints& endpoints, Json::Value& object) {
  object["tcpDomain"] = endpoints.tcpDomain;
  object["tcpPort"] = endpoints.tcpPort;
  object["udpDomain"] = endpoints.udpDomain;
  object["udpPort"] = endpoints.udpPort;
  object["webSocketDomain"] = endpoints.webSocketDomain;
  object["webSocketPort"] = endpoints.webSocketPort;
}

// What Json::Value::toStyledString gives; but its stream keeps a failed allocation to itself and hands out half a text.
std::string StyledText(const Json::Value& root) {
  std::ostringstream text;
  text.exceptions(std::ios::badbit | std::ios::failbit);
  const std::unique_ptr<Json::StreamWriter> writer(Json::StreamWriterBuilder().newStreamWriter());
  writer->write(root, &text);
  text << '\n';
  return text.str();
}

}  // namespace

void InstanceInfoToJson(const InstanceInfo& info, std::string& json) {
  Json::Value root;
  root["sessionId"] = info.sessionId;
  root["instanceNo"] = info.instanceNo;
  root["userId"] = info.userId;
  root["appPackage"] = info.appPackage;
  root["sessionSignExpireTime"] = Json::Int64(info.sessionSignExpireTime);
  root["sessionExpireTime"] = Json::Int64(info.sessionExpireTime);
  WriteEndpoints(info.endpoints, root["streamInfo"]);

  Json::Value lines(Json::arrayValue);
  for (const SubStreamInfo& line : info.subStreamInfoList) {
    Json::Value& object = lines.append(Json::Value(Json::objectValue));
    object["ispCode"] = line.ispCode;
    object["label"] = line.label;
    WriteEndpoints(line.endpoints, object);
  }
  root["subStreamInfoList"] = std::move(lines);

  Json::Value strategies(Json::arrayValue);
  for (const std::int32_t strategy : info.streamStrategyList) strategies.append(strategy);
  root["streamStrategyList"] = std::move(strategies);

  root["gCtrlNodeNo"] = info.gCtrlNodeNo;
  root["preemption"] = info.preemption;
  json = StyledText(root);
}

std::int32_t ParseInstanceInfo(const char* json, InstanceInfo& info) {
  Json::Value root;
  if (!ParseText(json, root)) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE]parse json[%s] failed", json);
    return -1;
  }
  return ReadRoot(root, info) ? 0 : -1;
}

}  // namespace qv_data_interface
