// The signalling of one connection: what the cloud says to each message of the client and when time has passed, apart
// from how it travels.
//
// Threads: the cloud's thread. Ownership: State outlives it; replies are values.
#ifndef QV_CLOUD_CONVERSATION_H
#define QV_CLOUD_CONVERSATION_H

#include <json/value.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/qv_cloud/state.h"

namespace qv_cloud {

struct Outgoing {
  bool binary = false;
  std::string bytes;
};

// The messages to send, and whether the connection ends behind them: with a closing hand-shake, dropped, or silent from
// then on.
struct Reply {
  enum class End { no, close, drop, vanish };
  std::vector<Outgoing> messages;
  std::chrono::milliseconds after{0};  // how much later than otherwise
  End end = End::no;
};

class Conversation {
 public:
  Conversation(State& state, std::uint32_t line) : state(state), line(line) {}

  Reply OnText(std::string_view text, Time now);
  Reply OnBinary();

  // When OnWake is to be called next; changes with every call and with the faults. A call too early does nothing.
  std::optional<Time> NextWake() const;
  Reply OnWake(Time now);

  // Whether the cloud still takes messages from this client.
  bool IsReading() const;

 private:
  enum class Stage { connected, authenticated, playing, ended };

  void HandleMessage(const Json::Value& message, Time now, Reply& reply);
  void HandleAuth(const Json::Value& message, Time now, Reply& reply);
  void HandlePlay(const Json::Value& message, Time now, Reply& reply);
  void HandleCommand(const Json::Value& message, Time now, Reply& reply);
  void HandleSession(const Json::Value& message, Time now, Reply& reply);
  void ChangeFrameRate(const Json::Value& args, Time now, Reply& reply);

  void SendError(std::uint32_t code, const char* message, Reply& reply);
  void SendFrame(Time now, Reply& reply);
  // Says what is to go wrong; the closing is arranged already.
  Fault ReachStep(Step step, Reply& reply);
  // Says whether the message is answered at all; it may be later.
  bool IsAnswered(Fault fault, Reply& reply) const;
  Reply Refuse(const std::string& reason);
  void Event(const std::string& what) const;

  bool IsErrorDue(const Faults& faults, Time now) const;
  std::optional<Time> NextFrameTime() const;

  State& state;
  const std::uint32_t line;
  Stage stage = Stage::connected;

  std::uint32_t videoFormat = 264;
  std::uint16_t width = 0;
  std::uint16_t height = 0;
  std::uint16_t frameRate = 0;
  std::uint32_t bitRate = 0;

  Time playedAt{0};
  Time nextFrame{0};
  std::uint64_t framesSent = 0;
  bool paused = false;  // until the session is renewed
};

}  // namespace qv_cloud

#endif
