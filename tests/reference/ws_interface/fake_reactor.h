// A reactor whose tasks, time and network the test moves by hand, and which says what is asked of it.
//
// Threads: the test's only. Ownership: the connection under test holds it; it holds no connection between tasks.
#ifndef TESTS_REFERENCE_WS_INTERFACE_FAKE_REACTOR_H
#define TESTS_REFERENCE_WS_INTERFACE_FAKE_REACTOR_H

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "reference/ws_interface/transport.h"

using SayLine = std::function<void(const std::string& line)>;

class FakeTransport final : public reference::ws::Transport {
 public:
  explicit FakeTransport(SayLine say) : say(std::move(say)) {}

  void Open(std::weak_ptr<reference::ws::TransportSink> newSink) override { weakSink = std::move(newSink); }
  void Write(std::string text) override {
    if (writing) throw std::logic_error("a second write at once");
    writing = true;
    say("write " + text);
    written.push_back(std::move(text));
  }
  void Close() noexcept override {
    if (!std::exchange(closed, true)) say("close");
  }
  const char* Stage() const override { return "faking"; }

  // The test keeps the connection alive.
  reference::ws::TransportSink& Sink() {
    const auto held = weakSink.lock();
    if (closed || !held) throw std::logic_error("an event after Close");
    return *held;
  }
  void FinishWrites() {
    while (writing && !closed) {
      writing = false;
      Sink().OnWritten();
    }
  }

  bool closed = false;
  std::vector<std::string> written;

 private:
  const SayLine say;
  std::weak_ptr<reference::ws::TransportSink> weakSink;
  bool writing = false;
};

class FakeReactor final : public reference::ws::Reactor {
 public:
  explicit FakeReactor(SayLine say) : say(std::move(say)) {}

  std::unique_ptr<reference::ws::Waker> MakeWaker(std::weak_ptr<reference::ws::WakerUser> newUser) override {
    // The connection that it belongs to keeps the reactor.
    struct FakeWaker final : reference::ws::Waker {
      explicit FakeWaker(FakeReactor& reactor) : reactor(reactor) {}
      bool Wake() noexcept override { return reactor.isWoken = true; }
      void WakeAfter(std::chrono::milliseconds delay) noexcept override { reactor.delay = delay; }
      void Cancel() noexcept override { reactor.delay.reset(); }
      FakeReactor& reactor;
    };
    user = std::move(newUser);
    return std::make_unique<FakeWaker>(*this);
  }
  std::shared_ptr<reference::ws::Transport> MakeTransport(const reference::ws::Endpoint&,
                                                          std::chrono::milliseconds) override {
    say("connect");
    return transport = std::make_shared<FakeTransport>(say);
  }

  void RunTasks() {
    while (std::exchange(isWoken, false)) {
      if (const auto held = user.lock()) held->OnWoken();
    }
  }
  // The time that the waker waits for has passed.
  void Expire() {
    delay.value();
    delay.reset();
    user.lock()->OnTime();
  }

  std::optional<std::chrono::milliseconds> delay;
  std::shared_ptr<FakeTransport> transport;

 private:
  const SayLine say;
  std::weak_ptr<reference::ws::WakerUser> user;
  bool isWoken = false;
};

#endif
