// The telemetry records, filled by the SDK's libraries and consumed by the collector.
// Times are milliseconds since 1970-01-01 UTC on the system clock; 0 means that the moment has not come.
#ifndef SDK_PASS_INTERFACE_MESSAGE_COLLECT_H
#define SDK_PASS_INTERFACE_MESSAGE_COLLECT_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace pass_interface {

struct MessageCollectBaseData {
  MessageCollectBaseData() = default;
  MessageCollectBaseData(const MessageCollectBaseData&) = default;
  MessageCollectBaseData& operator=(const MessageCollectBaseData&) = default;
  virtual ~MessageCollectBaseData() = default;

  std::string sessionId;
  std::string targetId;
};

struct MessageCollectStatusData : MessageCollectBaseData {
  std::string channel;
  std::string wsDomain;
  std::string wsPort;
  std::string errorCode;
  std::string statusText;
  std::string sdkVersion;
  std::string interfaceVersion;
  std::int64_t playResponseTime = 0;
  std::int64_t firstFrameTime = 0;
  std::int64_t releaseTime = 0;
  std::int32_t connectingCount = 0;
  std::int64_t connectingTime = 0;
  std::int64_t disconnectedTime = 0;
  std::int64_t connectedTime = 0;
  std::int32_t connectedFlag = 0;
  std::string detailText;
  std::string extraText;
  std::string processName;
  // Name to time. Found by a plain character pointer without making a string of it.
  std::map<std::string, std::int64_t, std::less<>> milestones;
};

struct MessageCollect {
  std::int32_t collectType = 1;
  std::int32_t collectStatus = 0;
  std::int32_t defaultMode = 1;
  std::int64_t timestamp = 0;
  std::string tag;
  std::shared_ptr<MessageCollectBaseData> data;
};

}  // namespace pass_interface

#endif
