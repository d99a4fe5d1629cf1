// The signalling messages between their JSON or binary form and values; docs/reference-protocol.md states them.
// Whatever comes in is checked for types, ranges and counts.
//
// Threads: values and pure functions. Ownership: values; spans and views are read during the call only.
#ifndef REFERENCE_WS_INTERFACE_MESSAGE_CODEC_H
#define REFERENCE_WS_INTERFACE_MESSAGE_CODEC_H

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "reference/ws_interface/result_codes.h"
#include "ws_interface/ws_interface_notic.h"
#include "ws_interface/ws_records.h"

namespace reference::ws {

// In bytes, without the NUL.
inline constexpr std::size_t kMaxTextSize = 4096;
inline constexpr std::size_t kMaxDocumentSize = std::size_t{1} << 20;

// kTaken when text can be sent: not null, UTF-8, at most kMaxTextSize bytes.
ResultCode CheckText(const char* text);

// Outgoing.

struct AuthRequest {
  std::string credential1;
  std::string sessionId;
  std::string targetId;
  std::string version;
  std::int32_t clientKind = 0;
  std::int32_t initNumber = 0;
  std::int32_t streamKind = 0;
};

std::string EncodeAuth(const AuthRequest& request);
// video.videoFormat is not read.
std::string EncodePlay(std::int32_t videoFormat, const ws_interface::WSVideoParam& video);
std::string EncodeSession(const std::string& sessionId);

// Writes one command, argument by argument. After an argument that cannot be sent the result says why.
class CommandWriter {
 public:
  explicit CommandWriter(int slot);

  void Add(std::int32_t value);
  void Add(std::uint64_t value);
  void Add(float value);
  void Add(const char* text);

  ResultCode Result() const { return result; }
  // REQUIRES: Result() is kTaken. To be called once.
  std::string Take();

 private:
  void Separate();
  template <class Number>
  void AddNumber(Number value);

  std::string json;
  bool empty = true;
  ResultCode result = kTaken;
};

// Incoming.

struct AuthAnswer {
  std::uint32_t code = 0;
  std::string message;
  std::string formats;
};

struct PlayAnswer {
  std::array<std::uint64_t, 10> values{};
};

struct Notice {
  std::uint32_t slot = 0;
  std::string text;
  // In the order of the arguments; a signed one is sign-extended.
  std::array<std::uint64_t, 6> numbers{};
};

struct CloudError {
  std::uint32_t code = 0;
  std::string message;
};

struct Malformed {
  std::string fault;
};

using Incoming = std::variant<AuthAnswer, PlayAnswer, Notice, CloudError, Malformed>;

// Never throws for what json holds.
Incoming DecodeMessage(std::string_view json);

void DeliverPlayAnswer(const PlayAnswer& answer, ws_interface::IWSInterfaceNotic& sink);
// REQUIRES: notice comes from DecodeMessage.
void DeliverNotice(const Notice& notice, ws_interface::IWSInterfaceNotic& sink);
// The video parameters that a notice puts in force, if it does.
std::optional<ws_interface::WSVideoParam> VideoParamInForce(const Notice& notice);

struct VideoFrame {
  std::uint64_t sequence = 0;
  std::uint64_t time = 0;
  std::uint32_t format = 0;
  std::size_t payloadSize = 0;
};

// Nothing when the header is cut short or names an unknown format.
std::optional<VideoFrame> DecodeVideoFrame(std::span<const std::uint8_t> bytes);

}  // namespace reference::ws

#endif
