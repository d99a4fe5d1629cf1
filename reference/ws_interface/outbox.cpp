#include "reference/ws_interface/outbox.h"

#include <utility>

namespace reference::ws {

Outbox::Verdict Outbox::Push(std::string text) {
  const std::lock_guard<std::mutex> lock(boxMutex);
  if (state != State::kOpen) return Verdict::kClosed;
  const std::size_t messages = waiting.size() + (writingBytes > 0 ? 1 : 0);
  if (messages >= kMaxMessages || waitingBytes + writingBytes + text.size() > kMaxBytes) return Verdict::kFull;
  // Counted once it is in, since that may lack memory.
  const std::size_t bytes = text.size();
  waiting.push_back(std::move(text));
  waitingBytes += bytes;
  return std::exchange(writerAwake, true) ? Verdict::kQueued : Verdict::kQueuedWakeWriter;
}

void Outbox::PushOwn(std::string text) {
  const std::lock_guard<std::mutex> lock(boxMutex);
  // Counted once it is in, since that may lack memory.
  const std::size_t bytes = text.size();
  waiting.push_back(std::move(text));
  waitingBytes += bytes;
  writerAwake = true;
}

void Outbox::Open() {
  const std::lock_guard<std::mutex> lock(boxMutex);
  if (state != State::kEnded) state = State::kOpen;
}

void Outbox::Close() {
  const std::lock_guard<std::mutex> lock(boxMutex);
  if (state != State::kEnded) state = State::kClosed;
  EmptyLocked();
}

void Outbox::End() {
  const std::lock_guard<std::mutex> lock(boxMutex);
  state = State::kEnded;
  EmptyLocked();
}

bool Outbox::Next(std::string& text) {
  const std::lock_guard<std::mutex> lock(boxMutex);
  writerAwake = !waiting.empty();
  writingBytes = 0;
  if (!writerAwake) return false;
  text = std::move(waiting.front());
  waiting.pop_front();
  writingBytes = text.size();
  waitingBytes -= writingBytes;
  return true;
}

void Outbox::EmptyLocked() {
  waiting.clear();
  waitingBytes = 0;
  writingBytes = 0;
  writerAwake = false;
}

}  // namespace reference::ws
