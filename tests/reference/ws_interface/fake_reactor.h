// A reactor whose tasks, time and network the test moves by hand.
//
// Threads: the test's only. Ownership: the connection under test holds it; it holds no connection between tasks.
#ifndef TESTS_REFERENCE_WS_INTERFACE_FAKE_REACTOR_H
#define TESTS_REFERENCE_WS_INTERFACE_FAKE_REACTOR_H

#include <deque>
#include <optional>
#include <stdexcept>
#include <vector>

#include "reference/ws_interface/transport.h"

class FakeTransport final : public reference::ws::Transport {
 public:
  void Open(std::weak_ptr<reference::ws::TransportSink> newSink) override { weakSink = std::move(newSink); }
  void Write(std::string text) override {
    if (writing) throw std::logic_error("a second write at once");
    writing = true;
    written.push_back(std::move(text));
  }
  void Close() override { closed = true; }
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
  std::weak_ptr<reference::ws::TransportSink> weakSink;
  bool writing = false;
};

class FakeReactor final : public reference::ws::Reactor {
 public:
  struct Alarm {
    std::optional<std::chrono::milliseconds> delay;
    std::function<void()> expired;
  };

  void Post(std::function<void()> task) override { tasks.push_back(std::move(task)); }
  std::unique_ptr<reference::ws::Timer> MakeTimer() override {
    struct FakeTimer final : reference::ws::Timer {
      explicit FakeTimer(std::shared_ptr<Alarm> alarm) : alarm(std::move(alarm)) {}
      ~FakeTimer() override { alarm->delay.reset(); }
      void Start(std::chrono::milliseconds delay, std::function<void()> expired) override {
        *alarm = {delay, std::move(expired)};
      }
      void Cancel() override { alarm->delay.reset(); }
      const std::shared_ptr<Alarm> alarm;
    };
    return std::make_unique<FakeTimer>(alarm);
  }
  std::shared_ptr<reference::ws::Transport> MakeTransport(const reference::ws::Endpoint&,
                                                          std::chrono::milliseconds) override {
    transports.push_back(std::make_shared<FakeTransport>());
    return transports.back();
  }

  void RunTasks() {
    while (!tasks.empty()) {
      const auto task = std::move(tasks.front());
      tasks.pop_front();
      task();
    }
  }
  // The time that the timer waits for has passed.
  void Expire() {
    if (!alarm->delay) throw std::logic_error("no timer runs");
    alarm->delay.reset();
    const auto expired = alarm->expired;
    expired();
  }
  FakeTransport& Last() { return *transports.back(); }

  const std::shared_ptr<Alarm> alarm = std::make_shared<Alarm>();
  std::vector<std::shared_ptr<FakeTransport>> transports;

 private:
  std::deque<std::function<void()>> tasks;
};

#endif
