/// @file
/// The record of one phone-connect answer: who granted what, until when, and where the instance's streams are.
#ifndef SDK_PASS_INTERFACE_INSTANCE_INFO_H
#define SDK_PASS_INTERFACE_INSTANCE_INFO_H

#include <cstdint>
#include <string>
#include <vector>

/// The HTTP service, its cipher helpers, and the records that the SDK's libraries share.
namespace pass_interface {

/// Where the streams of one line are. This library uses the WebSocket endpoint only.
struct StreamEndpoints {
  std::string tcpDomain;           ///< kept in the cache, not used here
  std::int32_t tcpPort = 0;        ///< kept in the cache, not used here
  std::string udpDomain;           ///< kept in the cache, not used here
  std::int32_t udpPort = 0;        ///< kept in the cache, not used here
  std::string webSocketDomain;     ///< host name or address of the signalling connection
  std::int32_t webSocketPort = 0;  ///< its port
};

/// The endpoints of one carrier line.
struct SubStreamInfo {
  std::int32_t ispCode = 0;   ///< the line's code, for IQVDataInterface::ChangeIsp
  std::string label;          ///< its name, UTF-8
  StreamEndpoints endpoints;  ///< its streams
};

/// One granted session; as an answer with a code other than 0, a refusal and nothing but the header.
struct InstanceInfo {
  /// The answer's header, which is not kept in the cache. A code of 0 means that the service granted the session.
  std::string requestTag;
  std::int32_t code = -1;  ///< of an answer, 0: granted; any other: refused
  std::string message;     ///< the service's text for the code

  std::string sessionId;   ///< with it the phone lets the connection in; a secret
  std::string instanceNo;  ///< kept in the cache, not used here
  std::string userId;      ///< kept in the cache, not used here
  std::string appPackage;  ///< kept in the cache, not used here
  /// Milliseconds since 1970-01-01 UTC.
  std::int64_t sessionSignExpireTime = 0;
  std::int64_t sessionExpireTime = 0;  ///< kept in the cache, not used here; ms since 1970-01-01 UTC

  /// The default line.
  StreamEndpoints endpoints;
  /// The other lines, one entry a carrier.
  std::vector<SubStreamInfo> subStreamInfoList;

  std::vector<std::int32_t> streamStrategyList;  ///< kept in the cache, not used here
  std::string gCtrlNodeNo;                       ///< kept in the cache, not used here
  bool preemption = true;                        ///< kept in the cache, not used here
};

/// The answer to a refresh-session request: the same header, then the renewed session id.
struct RefreshSessionRsp {
  std::string requestTag;  ///< the service's name of the request, for its support
  std::int32_t code = -1;  ///< 0: renewed; any other: refused
  std::string message;     ///< the service's text for the code
  std::string sessionId;   ///< the new one; a secret
};

}  // namespace pass_interface

#endif
