// What an OpenTelemetry trace tells of a connection, and when it is due: once a connection, at the first of
//
//   its first frame (1/2);
//   a failure that leaves nothing to wait for: no session was granted, or no connection object could be made;
//   its release (1/4), with the error that came on the way, if one did: a loss is followed by attempts that may
//   succeed.
//
// A connection is known by its target and its milestone startGetInstanceInfo: messages name it no other way. What comes
// after its trace is not in it; the database has every message.
//
// Threads: ConnectionWatch is used by one thread at a time. Ownership: a trace is a value and holds no secret: neither
// the session id nor what the sender wrote into the message.
#ifndef REFERENCE_COLLECT_INTERFACE_CONNECTION_TRACE_H
#define REFERENCE_COLLECT_INTERFACE_CONNECTION_TRACE_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "pass_interface/message_collect.h"

namespace collect_interface {

// The steps of a connection between two milestones each, under the names of qv_connect's timeline.
inline constexpr char kBeginOfConnection[] = "startGetInstanceInfo";
inline constexpr struct {
  const char* name;
  const char* from;
  const char* to;
} kSteps[] = {
    {"phone-connect", kBeginOfConnection, "endGetInstanceInfo"},
    {"resolve the name", "startConnect", "dnsParseSucc"},
    {"TCP, TLS, WebSocket", "dnsParseSucc", "connectSucc"},
    {"authentication", "startAuth", "onAuthR"},
    {"choose the format", "onAuthR", "sendPlay"},
    {"play", "sendPlay", "onPlayR"},
    {"first frame", "onPlayR", "recvFirstFrame"},
};

struct ConnectionTrace {
  enum class Outcome { firstFrame, failed, released };

  Outcome outcome = Outcome::released;
  // In decimal; empty unless failed.
  std::string errorCode;
  // Of the message that made it due: ms since 1970-01-01 UTC.
  std::int64_t endMs = 0;
  std::string target, session, lineHost, linePort, sdkType, sdkVersion, interfaceVersion, processName;
  // Those of the steps. An embedding SDK's own stay behind: it may have recorded any number.
  std::map<std::string, std::int64_t, std::less<>> milestones;
};

class ConnectionWatch {
 public:
  // The trace that is due with this message, if one is.
  std::optional<ConnectionTrace> OnMessage(const pass_interface::MessageCollect& message, std::string_view sdkType);

 private:
  struct Seen {
    bool sent = false;
    std::string errorCode;
  };

  // By beginning and target. The oldest beginning goes past kMaxConnections.
  static constexpr std::size_t kMaxConnections = 1024;
  std::map<std::pair<std::int64_t, std::string>, Seen> connections;
};

}  // namespace collect_interface

#endif
