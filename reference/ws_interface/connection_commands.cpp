// The commands: run on the caller's thread up to the queue.
#include "reference/ws_interface/connection.h"

namespace reference::ws {

template <class... Arguments>
std::int32_t Connection::Command(int slot, Arguments... arguments) {
  CommandWriter writer(slot);
  (writer.Add(arguments), ...);
  return writer.Result() == kTaken ? Queue(writer.Take()) : writer.Result();
}

std::int32_t Connection::Queue(std::string text) {
  switch (outbox.Push(std::move(text))) {
    case Outbox::Verdict::kClosed:
      return kNotConnected;
    case Outbox::Verdict::kFull:
      return kQueueFull;
    case Outbox::Verdict::kQueuedWakeWriter:
      waker->Wake();
      return kTaken;
    case Outbox::Verdict::kQueued:
      break;
  }
  return kTaken;
}

std::int32_t Connection::SetSessionId(const char* newSessionId) {
  const ResultCode check = CheckText(newSessionId);
  if (check != kTaken) return check;
  const std::lock_guard<std::mutex> lock(sessionMutex);
  sessionId = newSessionId;
  const std::int32_t result = Queue(EncodeSession(sessionId));
  // Without a connection the id is there for the next authentication, which is all that was asked for.
  return result == kNotConnected ? kTaken : result;
}

std::int32_t Connection::SendReq2(std::uint64_t value1, std::uint64_t value2) {
  return Command(2, value1, value2);
}

std::int32_t Connection::SendReq3(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                                  std::int32_t count) {
  return Command(3, value1, value2, value3, count);
}

std::int32_t Connection::SendReq4(float value1, float value2, float value3, float value4, float value5, float value6,
                                  float value7, float value8) {
  return Command(4, value1, value2, value3, value4, value5, value6, value7, value8);
}

std::int32_t Connection::SendReq5(std::int32_t value1, float value2, float value3, float value4) {
  return Command(5, value1, value2, value3, value4);
}

std::int32_t Connection::SendReq6(const char* text1, const char* text2) {
  return Command(6, text1, text2);
}

std::int32_t Connection::SendReq7(const char* text) {
  return Command(7, text);
}

std::int32_t Connection::SendReq8(const char* text) {
  return Command(8, text);
}

std::int32_t Connection::SendReq9(const char* text, std::int32_t value) {
  return Command(9, text, value);
}

std::int32_t Connection::SendReq10(std::uint64_t value1, std::uint64_t value2) {
  return Command(10, value1, value2);
}

std::int32_t Connection::SendReq11(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                                   std::int32_t value4) {
  return Command(11, value1, value2, value3, value4);
}

std::int32_t Connection::SendMicParamReq(std::int32_t value1, std::int32_t value2, std::int32_t value3) {
  return Command(12, value1, value2, value3);
}

std::int32_t Connection::SendReq13(std::uint64_t value1, std::uint64_t value2) {
  return Command(13, value1, value2);
}

std::int32_t Connection::SendCameraParamReq(std::int32_t videoFormat, std::int32_t value2, std::int32_t value3,
                                            std::uint64_t value4, std::int32_t value5) {
  return Command(14, videoFormat, value2, value3, value4, value5);
}

std::int32_t Connection::SendReq15(std::uint64_t value1, std::uint64_t value2) {
  return Command(15, value1, value2);
}

std::int32_t Connection::SendReq16(std::uint64_t value1, std::uint64_t value2) {
  return Command(16, value1, value2);
}

std::int32_t Connection::SendReq17(std::int32_t value) {
  return Command(17, value);
}

std::int32_t Connection::SendDummyReq() {
  return Command(18);
}

}  // namespace reference::ws
