#include "reference/collect_interface/connection_trace.h"

#include "reference/collect_interface/message_rows.h"
#include "reference/collect_interface/session_digest.h"

namespace collect_interface {
namespace {

using pass_interface::MessageCollect;
using Status = pass_interface::MessageCollectStatusData;
using Outcome = ConnectionTrace::Outcome;

// In nanoseconds it fits into 64 bits.
constexpr std::int64_t kLatestMs = 9'000'000'000'000;

// 0: has not come, or came in an earlier connection of the same object, which keeps its milestones, or is no time that
// a clock tells: an embedding SDK records what it likes.
std::int64_t Since(const Status& status, std::int64_t beginMs, const char* name) {
  const auto found = status.milestones.find(name);
  if (found == status.milestones.end() || found->second < beginMs || found->second > kLatestMs) return 0;
  return found->second;
}

bool Is(const MessageCollect& message, int type, int state) {
  return message.collectType == type && message.collectStatus == state;
}

ConnectionTrace Copy(const MessageCollect& message, const Status& status, std::string_view sdkType) {
  ConnectionTrace trace;
  trace.endMs = message.timestamp;
  trace.target = Bounded(status.targetId);
  trace.session = SessionDigest(status.sessionId);
  trace.lineHost = Bounded(status.wsDomain);
  trace.linePort = Bounded(status.wsPort);
  trace.sdkType = Bounded(sdkType);
  trace.sdkVersion = Bounded(status.sdkVersion);
  trace.interfaceVersion = Bounded(status.interfaceVersion);
  trace.processName = Bounded(status.processName);
  for (const auto& step : kSteps) {
    for (const char* name : {step.from, step.to}) {
      if (const std::int64_t time = Since(status, 1, name); time != 0) trace.milestones.emplace(name, time);
    }
  }
  return trace;
}

}  // namespace

std::optional<ConnectionTrace> ConnectionWatch::OnMessage(const MessageCollect& message, std::string_view sdkType) {
  const auto* const status = dynamic_cast<const Status*>(message.data.get());
  if (status == nullptr) return std::nullopt;
  const std::int64_t beginMs = Since(*status, 1, kBeginOfConnection);
  const bool isRelease = Is(message, 1, 4);
  if (beginMs == 0) return std::nullopt;
  const bool isGranted = Since(*status, beginMs, "endGetInstanceInfo") != 0;
  // Asked for both: an earlier connection's frame may have come in the millisecond in which this one began.
  const bool hasFirstFrame = isGranted && Since(*status, beginMs, "recvFirstFrame") != 0;

  const auto [place, isNew] = connections.try_emplace({beginMs, std::string(Bounded(status->targetId))});
  Seen seen = place->second;
  // One that had its first frame, and was pushed out of here since.
  if (isNew && isRelease && hasFirstFrame) seen.sent = true;
  const bool isFinal = Is(message, 0, 0) || (Is(message, 0, 5) && !isGranted);
  // A service's own code says more than the loss that may follow it.
  if (isFinal || Is(message, 0, 5) || (Is(message, 0, 6) && seen.errorCode.empty())) {
    seen.errorCode = Bounded(status->errorCode);
  }
  std::optional<ConnectionTrace> trace;
  if (!seen.sent && (Is(message, 1, 2) || isFinal || isRelease)) {
    trace = Copy(message, *status, sdkType);
    if (hasFirstFrame || Is(message, 1, 2)) {
      trace->outcome = Outcome::firstFrame;
    } else if (!seen.errorCode.empty()) {
      trace->outcome = Outcome::failed;
      trace->errorCode = seen.errorCode;
    }
    seen.sent = true;
  }
  place->second = std::move(seen);
  if (connections.size() > kMaxConnections) connections.erase(connections.begin());
  return trace;
}

}  // namespace collect_interface
