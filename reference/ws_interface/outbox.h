// The messages that wait for the network: bounded, so that a slow peer costs a fixed amount of memory.
//
// Threads: Push and End from any; the others on the I/O thread. Ownership: holds the texts until they are handed out.
#ifndef REFERENCE_WS_INTERFACE_OUTBOX_H
#define REFERENCE_WS_INTERFACE_OUTBOX_H

#include <cstddef>
#include <deque>
#include <mutex>
#include <string>

namespace reference::ws {

class Outbox {
 public:
  static constexpr std::size_t kMaxMessages = 1024;
  static constexpr std::size_t kMaxBytes = std::size_t{1} << 20;

  enum class Verdict {
    kQueued,
    // Queued, and nobody is writing: the caller wakes the writer.
    kQueuedWakeWriter,
    kClosed,
    kFull
  };

  // A command. Taken only while the box is open. What is being written counts towards the bounds.
  Verdict Push(std::string text);
  // The connection's own message: taken whether open or not, past the bounds too.
  void PushOwn(std::string text);

  void Open();
  // Empties the box. It may be opened again.
  void Close();
  // Like Close, and for good.
  void End();

  // The message before this one is written: gives the next, or says that there is none.
  bool Next(std::string& text);

 private:
  enum class State { kClosed, kOpen, kEnded };

  void EmptyLocked();

  std::mutex boxMutex;
  State state = State::kClosed;
  std::deque<std::string> waiting;
  std::size_t waitingBytes = 0;
  std::size_t writingBytes = 0;
  // From the moment a writer is woken until it finds the box empty.
  bool writerAwake = false;
};

}  // namespace reference::ws

#endif
