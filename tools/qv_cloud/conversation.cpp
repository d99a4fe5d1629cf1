#include "tools/qv_cloud/conversation.h"

#include <algorithm>
#include <limits>

#include "tools/qv_cloud/commands.h"
#include "tools/qv_cloud/json_text.h"

namespace qv_cloud {
namespace {

constexpr const char* kGarbage = R"({"type":"garbage)";

void Send(Reply& reply, const Json::Value& message) {
  reply.messages.push_back(Outgoing{false, WriteCompact(message)});
}

Json::Value MessageOf(const char* type) {
  Json::Value message(Json::objectValue);
  message["type"] = type;
  return message;
}

void AppendBigEndian(std::string& bytes, std::uint64_t value, int size) {
  for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xff);
}

Time FrameInterval(std::uint16_t frameRate) {
  return std::max<Time>(std::chrono::milliseconds(1), Time(1000000 / frameRate));
}

}  // namespace

Reply Conversation::OnText(std::string_view text, Time now) {
  if (stage == Stage::ended) return {};
  try {
    Reply reply;
    HandleMessage(ParseObject(text), now, reply);
    if (reply.end != Reply::End::no) stage = Stage::ended;
    return reply;
  } catch (const Malformed& error) {
    return Refuse(error.what());
  }
}

Reply Conversation::OnBinary() {
  return Refuse("binary message");
}

void Conversation::HandleMessage(const Json::Value& message, Time now, Reply& reply) {
  const std::string type = ReadText(message, "type");
  const bool beforeAuth = stage == Stage::connected;
  if (type == "auth" && beforeAuth) return HandleAuth(message, now, reply);
  if (type == "play" && stage == Stage::authenticated) return HandlePlay(message, now, reply);
  if (type == "command" && !beforeAuth) return HandleCommand(message, now, reply);
  if (type == "session" && !beforeAuth) return HandleSession(message, now, reply);
  throw Malformed("unexpected message");
}

void Conversation::HandleAuth(const Json::Value& message, Time now, Reply& reply) {
  const std::string sessionId = ReadText(message, "sessionId");
  for (const char* key : {"credential1", "targetId", "version"}) ReadTextOr(message, key, "");
  state.observation.Change([](CloudStats& stats) { ++stats.authentications; });
  const Fault fault = ReachStep(Step::auth, reply);
  if (!IsAnswered(fault, reply)) return;
  if (fault == Fault::garbage) {
    reply.messages.push_back(Outgoing{false, kGarbage});
    return;
  }

  Json::Value answer = MessageOf("authRsp");
  if (state.sessions.Authenticate(sessionId, now, state.switches.Get().expireSessions)) {
    answer["code"] = 0;
    answer["message"] = "success";
    answer["formats"] = "264,265";
    stage = Stage::authenticated;
    Event("authenticated");
  } else {
    answer["code"] = kSessionRefused;
    answer["message"] = "session unknown or expired";
    reply.end = Reply::End::close;
    state.observation.Change([](CloudStats& stats) { ++stats.refusedAuthentications; });
    Event("authentication refused");
  }
  Send(reply, answer);
}

void Conversation::HandlePlay(const Json::Value& message, Time now, Reply& reply) {
  const auto asked = ReadUnsigned<std::uint32_t>(message, "videoFormat");
  videoFormat = asked == 265 ? 265 : 264;
  width = ReadUnsigned<std::uint16_t>(message, "width");
  height = ReadUnsigned<std::uint16_t>(message, "height");
  frameRate = ReadUnsigned<std::uint16_t>(message, "frameRate");
  bitRate = ReadUnsigned<std::uint32_t>(message, "bitRate");
  state.observation.Change([](CloudStats& stats) { ++stats.plays; });
  Event("play " + std::to_string(videoFormat) + " at " + std::to_string(frameRate) + " frames a second");
  const Fault fault = ReachStep(Step::play, reply);
  if (!IsAnswered(fault, reply)) return;

  Json::Value answer = MessageOf("playRsp");
  for (const std::uint32_t value : {0U, 0U, videoFormat, std::uint32_t{width}, std::uint32_t{height},
                                    std::uint32_t{frameRate}, bitRate, 0U, 0U, 0U}) {
    answer["values"].append(value);
  }
  Send(reply, answer);
  if (fault == Fault::garbage) reply.messages.push_back(Outgoing{false, kGarbage});
  stage = Stage::playing;
  playedAt = now;
  nextFrame = now;
}

void Conversation::HandleCommand(const Json::Value& message, Time now, Reply& reply) {
  const auto slot = ReadUnsigned<std::uint32_t>(message, "slot");
  const Json::Value& args = message["args"];
  CheckCommand(slot, args);
  Event("command " + std::to_string(slot));
  state.observation.Change([&](CloudStats& stats) {
    if (stats.commands.size() < kMaxCommandsKept) stats.commands.push_back({line, slot, WriteCompact(args)});
  });
  if (slot == 15) return ChangeFrameRate(args, now, reply);
  if (slot != 7 && slot != 18) return;
  Json::Value notice = MessageOf("notice");
  notice["slot"] = slot == 7 ? 6 : 5;
  notice["args"] = args;
  Send(reply, notice);
}

void Conversation::ChangeFrameRate(const Json::Value& args, Time now, Reply& reply) {
  const std::uint64_t asked = args[0].asUInt64();
  const bool possible = asked <= std::numeric_limits<std::uint16_t>::max();
  if (possible) {
    frameRate = static_cast<std::uint16_t>(asked);
    nextFrame = now;
  }
  Json::Value notice = MessageOf("notice");
  notice["slot"] = 11;
  for (const Json::Value& value :
       {Json::Value(possible ? 0 : -1), args[1], Json::Value(Json::UInt{frameRate}), Json::Value(Json::UInt{bitRate}),
        Json::Value(Json::UInt{width}), Json::Value(Json::UInt{height})}) {
    notice["args"].append(value);
  }
  Send(reply, notice);
}

void Conversation::HandleSession(const Json::Value& message, Time now, Reply& reply) {
  if (!state.sessions.IsValid(ReadText(message, "sessionId"), now)) {
    Event("renewed session refused");
    return SendError(static_cast<std::uint32_t>(kSessionRefused), "session unknown or expired", reply);
  }
  state.observation.Change([](CloudStats& stats) { ++stats.renewals; });
  Event("session renewed");
  paused = false;
  nextFrame = now;
}

Reply Conversation::OnWake(Time now) {
  Reply reply;
  if (stage != Stage::playing) return reply;
  const Faults faults = state.switches.Get();
  if (IsErrorDue(faults, now) && state.switches.TakeError()) {
    paused = paused || faults.errorCode == kSessionExpired;
    SendError(faults.errorCode, faults.errorCode == kSessionExpired ? "session expired" : "reported by the cloud",
              reply);
  }
  const std::optional<Time> due = NextFrameTime();
  if (due && *due <= now) {
    SendFrame(now, reply);
    const Fault fault = framesSent == 1 ? ReachStep(Step::firstFrame, reply) : Fault::none;
    if (fault == Fault::silent) reply.end = Reply::End::vanish;
    if (fault == Fault::garbage) reply.messages.push_back(Outgoing{true, kGarbage});
    const bool dropDue = faults.dropAfterFrames != 0 && framesSent >= faults.dropAfterFrames;
    if (dropDue && state.switches.TakeDrop()) {
      Event("dropped after " + std::to_string(framesSent) + " frames");
      reply.end = Reply::End::drop;
    }
  }
  if (reply.end != Reply::End::no) stage = Stage::ended;
  return reply;
}

std::optional<Time> Conversation::NextWake() const {
  if (stage != Stage::playing) return std::nullopt;
  std::optional<Time> next = NextFrameTime();
  if (state.switches.IsErrorArmed()) {
    const Faults faults = state.switches.Get();
    const Time errorTime = playedAt + std::chrono::milliseconds(faults.errorAfterMs);
    const bool waitsForFrames = faults.errorAfterFrames > framesSent;
    if (!waitsForFrames) next = std::min(next.value_or(errorTime), errorTime);
  }
  return next;
}

bool Conversation::IsErrorDue(const Faults& faults, Time now) const {
  if (faults.errorAfterFrames != 0) return framesSent >= faults.errorAfterFrames;
  return now >= playedAt + std::chrono::milliseconds(faults.errorAfterMs);
}

std::optional<Time> Conversation::NextFrameTime() const {
  const bool wanted = !paused && (frameRate != 0 || framesSent == 0);
  return wanted ? std::optional(nextFrame) : std::nullopt;
}

void Conversation::SendFrame(Time now, Reply& reply) {
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now);
  std::string bytes;
  bytes.reserve(20 + state.options.framePayload);
  AppendBigEndian(bytes, framesSent++, 8);
  AppendBigEndian(bytes, static_cast<std::uint64_t>(milliseconds.count()), 8);
  AppendBigEndian(bytes, videoFormat, 4);
  bytes.append(state.options.framePayload, '\0');
  reply.messages.push_back(Outgoing{true, std::move(bytes)});
  state.observation.Change([](CloudStats& stats) { ++stats.framesSent; });
  if (framesSent == 1) Event("first frame");

  if (frameRate == 0) return;
  nextFrame += FrameInterval(frameRate);
  // A client that was slow gets no burst of the frames that it missed.
  if (nextFrame < now) nextFrame = now;
}

void Conversation::SendError(std::uint32_t code, const char* message, Reply& reply) {
  Json::Value error = MessageOf("error");
  error["code"] = code;
  error["message"] = message;
  Send(reply, error);
  state.observation.Change([](CloudStats& stats) { ++stats.errorsReported; });
  Event("error " + std::to_string(code));
}

Fault Conversation::ReachStep(Step step, Reply& reply) {
  const Fault fault = state.FaultAt(Service::signalling, step);
  if (fault == Fault::close) {
    Event("dropped as the faults ask");
    reply.end = Reply::End::drop;
  }
  return fault;
}

bool Conversation::IsAnswered(Fault fault, Reply& reply) const {
  if (fault == Fault::close) return false;
  if (fault != Fault::silent) return true;
  reply.after = std::chrono::milliseconds(state.switches.Get().silentMs);
  return reply.after.count() != 0;
}

Reply Conversation::Refuse(const std::string& reason) {
  state.observation.Change([](CloudStats& stats) { ++stats.malformed; });
  Event("malformed message: " + reason);
  stage = Stage::ended;
  Reply reply;
  reply.end = Reply::End::close;
  return reply;
}

bool Conversation::IsReading() const {
  const bool stopped = stage == Stage::playing && state.switches.Get().stopReading;
  return stage != Stage::ended && !stopped;
}

void Conversation::Event(const std::string& what) const {
  state.observation.Event("line " + std::to_string(line) + ": " + what);
}

}  // namespace qv_cloud
