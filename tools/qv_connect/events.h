// What reaches the main thread: notices of the library and lines of input, in the order in which they came.
//
// Threads: Push and Wait from any thread. Ownership: events hold copies.
#ifndef TOOLS_QV_CONNECT_EVENTS_H
#define TOOLS_QV_CONNECT_EVENTS_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

namespace qv_connect {

using Clock = std::chrono::steady_clock;

enum class EventKind {
  kStatus,   // code and text of the library or the cloud
  kSession,  // the session is in hand; code is 1 when it came inside GetPhoneConnect, thus from the cache
  kFormats,  // the phone let us in; code is the chosen format
  kPlayAnswer,
  kFirstFrame,
  kRelay,  // a notice of the phone
  kInput,  // one line
  kInputEnd
};

struct Event {
  EventKind kind = EventKind::kStatus;
  Clock::time_point at;
  std::int32_t code = 0;
  std::string text;
};

class EventQueue {
 public:
  void Push(EventKind kind, std::int32_t code, std::string text) {
    const std::lock_guard<std::mutex> lock(mutex);
    events.push_back({kind, Clock::now(), code, std::move(text)});
    arrived.notify_one();
  }

  // The next event; empty when none came in time.
  std::optional<Event> Wait(Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mutex);
    if (!arrived.wait_until(lock, deadline, [this] { return !events.empty(); })) return std::nullopt;
    Event event = std::move(events.front());
    events.pop_front();
    return event;
  }

 private:
  std::mutex mutex;
  std::condition_variable arrived;
  std::deque<Event> events;
};

}  // namespace qv_connect

#endif
