// The record of one phone-connect answer: who granted what, until when, and where the instance's streams are.
#ifndef SDK_PASS_INTERFACE_INSTANCE_INFO_H
#define SDK_PASS_INTERFACE_INSTANCE_INFO_H

#include <cstdint>
#include <string>
#include <vector>

namespace pass_interface {

struct StreamEndpoints {
  std::string tcpDomain;
  std::int32_t tcpPort = 0;
  std::string udpDomain;
  std::int32_t udpPort = 0;
  std::string webSocketDomain;
  std::int32_t webSocketPort = 0;
};

// The endpoints of one carrier line.
struct SubStreamInfo {
  std::int32_t ispCode = 0;
  std::string label;
  StreamEndpoints endpoints;
};

struct InstanceInfo {
  // The answer's header. A code of 0 means that the service granted the session.
  std::string requestTag;
  std::int32_t code = -1;
  std::string message;

  std::string sessionId;
  std::string instanceNo;
  std::string userId;
  std::string appPackage;
  // Milliseconds since 1970-01-01 UTC.
  std::int64_t sessionSignExpireTime = 0;
  std::int64_t sessionExpireTime = 0;

  // The default line.
  StreamEndpoints endpoints;
  // The other lines, one entry a carrier.
  std::vector<SubStreamInfo> subStreamInfoList;

  std::vector<std::int32_t> streamStrategyList;
  std::string gCtrlNodeNo;
  bool preemption = true;
};

// The answer to a refresh-session request: the same header, then the renewed session id.
struct RefreshSessionRsp {
  std::string requestTag;
  std::int32_t code = -1;
  std::string message;
  std::string sessionId;
};

}  // namespace pass_interface

#endif
