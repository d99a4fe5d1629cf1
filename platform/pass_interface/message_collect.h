/// @file
/// The telemetry records, filled by the SDK's libraries and consumed by the collector.
/// Times are milliseconds since 1970-01-01 UTC on the system clock; 0 means that the moment has not come.
#ifndef SDK_PASS_INTERFACE_MESSAGE_COLLECT_H
#define SDK_PASS_INTERFACE_MESSAGE_COLLECT_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace pass_interface {

/// What the data of every message have.
struct MessageCollectBaseData {
  /// Copied and destroyed as what it is.
  ///@{
  MessageCollectBaseData() = default;
  MessageCollectBaseData(const MessageCollectBaseData&) = default;
  MessageCollectBaseData& operator=(const MessageCollectBaseData&) = default;
  virtual ~MessageCollectBaseData() = default;
  ///@}

  std::string sessionId;  ///< the session of the connection; a secret
  std::string targetId;   ///< the phone
};

/// The status of one connection, as gathered when the message is sent.
struct MessageCollectStatusData : MessageCollectBaseData {
  std::string channel;                ///< "websocket"
  std::string wsDomain;               ///< host of the default line's signalling connection
  std::string wsPort;                 ///< its port, in decimal
  std::string errorCode;              ///< in decimal; empty for none
  std::string statusText;             ///< not filled by this library
  std::string sdkVersion;             ///< this library's, or the embedding SDK's when it has given one
  std::string interfaceVersion;       ///< of this library
  std::int64_t playResponseTime = 0;  ///< of the last answer to play
  std::int64_t firstFrameTime = 0;    ///< of the first frame since the last loss or release
  std::int64_t releaseTime = 0;       ///< of the last release
  std::int32_t connectingCount = 0;   ///< attempts to connect so far
  std::int64_t connectingTime = 0;    ///< of the last attempt
  std::int64_t disconnectedTime = 0;  ///< of the last loss
  std::int64_t connectedTime = 0;     ///< of the last time that the connection stood
  std::int32_t connectedFlag = 0;     ///< 1 since it stood, 0 after a loss; a release or change of line leaves it
  std::string detailText;             ///< of the sender; the request tag of a failed answer
  std::string extraText;              ///< of the sender
  std::string processName;            ///< file name of the host's program
  /// Name to time. Found by a plain character pointer without making a string of it.
  std::map<std::string, std::int64_t, std::less<>> milestones;
};

/// One message to the collector.
struct MessageCollect {
  std::int32_t collectType = 1;                  ///< what the message is about; docs/telemetry.md has the pairs
  std::int32_t collectStatus = 0;                ///< see collectType
  std::int32_t defaultMode = 1;                  ///< 1 when the front end's modeFlag is 0
  std::int64_t timestamp = 0;                    ///< when it was sent
  std::string tag;                               ///< not filled by this library
  std::shared_ptr<MessageCollectBaseData> data;  ///< a MessageCollectStatusData
};

}  // namespace pass_interface

#endif
