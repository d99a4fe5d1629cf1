// What a connection needs of the network, kept abstract so that its sequence of steps can be tested without sockets.
//
// Threads: everything on the I/O thread, unless it says otherwise. Ownership: a connection holds its reactor, its waker
// and its transport; they hold the connection weakly. The transport is released on the I/O thread.
#ifndef REFERENCE_WS_INTERFACE_TRANSPORT_H
#define REFERENCE_WS_INTERFACE_TRANSPORT_H

#include <chrono>
#include <cstdint>
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
  virtual void Close() noexcept = 0;
  // What it is busy with, for the log.
  virtual const char* Stage() const = 0;

  virtual ~Transport() = default;
};

// Called by its waker on the I/O thread.
class WakerUser {
 public:
  virtual void OnWoken() = 0;
  virtual void OnTime() = 0;
  // A task of the I/O thread failed, most likely for want of memory. Whatever was under way may never report.
  virtual void OnFault() noexcept = 0;

  virtual ~WakerUser() = default;
};

// Brings a connection to the I/O thread. Only making one takes memory, so that no wait is left without an end, and no
// connection unclosed, when there is none.
class Waker {
 public:
  // OnWoken comes soon, once for all calls before it. From any thread. False when the I/O thread has ended.
  virtual bool Wake() noexcept = 0;
  // OnTime comes then. Replaces what was asked for before.
  virtual void WakeAfter(std::chrono::milliseconds delay) noexcept = 0;
  virtual void Cancel() noexcept = 0;

  virtual ~Waker() = default;
};

class Reactor {
 public:
  // From any thread.
  virtual std::unique_ptr<Waker> MakeWaker(std::weak_ptr<WakerUser> user) = 0;
  // keepAlive: interval of the pings, a peer silent for two of them being lost; 0: no pings.
  virtual std::shared_ptr<Transport> MakeTransport(const Endpoint& endpoint, std::chrono::milliseconds keepAlive) = 0;

  virtual ~Reactor() = default;
};

}  // namespace reference::ws

#endif
