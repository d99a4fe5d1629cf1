// What a connection needs of the network, kept abstract so that its sequence of steps can be tested without sockets.
//
// Threads: everything on the I/O thread, except Reactor::Post. Ownership: a connection holds its reactor, its timer and
// its transport; they hold the connection weakly. Timer and transport are released on the I/O thread.
#ifndef REFERENCE_WS_INTERFACE_TRANSPORT_H
#define REFERENCE_WS_INTERFACE_TRANSPORT_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "reference/ws_interface/endpoint.h"

namespace reference::ws {

// Told what happens on one way to an open WebSocket and on it. Events never come from inside a call of the transport's.
class TransportSink {
 public:
  virtual void OnResolved() = 0;
  virtual void OnOpen() = 0;
  virtual void OnText(std::string_view text) = 0;
  virtual void OnBinary(std::span<const std::uint8_t> bytes) = 0;
  virtual void OnWritten() = 0;
  // The last event: it could not be opened, or it is lost. reason is for the log.
  virtual void OnLost(const std::string& reason) = 0;

  virtual ~TransportSink() = default;
};

// One attempt at one WebSocket. It bounds no wait but the keep-alive: its user closes it when it takes too long.
class Transport {
 public:
  virtual void Open(std::weak_ptr<TransportSink> sink) = 0;
  // Answered by OnWritten. REQUIRES: OnOpen has come, and OnWritten for the message before.
  virtual void Write(std::string text) = 0;
  // Drops the connection without waiting for the peer. No event comes after it.
  virtual void Close() = 0;
  // What it is busy with, for the log.
  virtual const char* Stage() const = 0;

  virtual ~Transport() = default;
};

class Timer {
 public:
  // Replaces what was started before.
  virtual void Start(std::chrono::milliseconds delay, std::function<void()> expired) = 0;
  virtual void Cancel() = 0;

  virtual ~Timer() = default;
};

class Reactor {
 public:
  // Runs task on the I/O thread, in the order of the posts; drops it when that thread has ended. From any thread.
  virtual void Post(std::function<void()> task) = 0;
  virtual std::unique_ptr<Timer> MakeTimer() = 0;
  // keepAlive: interval of the pings, a peer silent for two of them being lost; 0: no pings.
  virtual std::shared_ptr<Transport> MakeTransport(const Endpoint& endpoint, std::chrono::milliseconds keepAlive) = 0;

  virtual ~Reactor() = default;
};

}  // namespace reference::ws

#endif
