// The door through which a service's notices leave: it binds a sink weakly, and closing it is what makes "when stop has
// returned, no further notice comes" true.
#ifndef REFERENCE_COMMON_NOTICE_GATE_H
#define REFERENCE_COMMON_NOTICE_GATE_H

#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

#include "reference/common/export.h"

namespace reference {

// Marks the calling thread as delivering a notice, across all reference libraries. A thread that delivers a notice
// never waits for another notice to end: two services that stop each other from inside their notices would wait for
// ever.
class REFERENCE_COMMON_API NoticeScope {
 public:
  NoticeScope();
  ~NoticeScope();
  NoticeScope(const NoticeScope&) = delete;
  NoticeScope& operator=(const NoticeScope&) = delete;

  static bool IsInside();
};

// Threads: Deliver is called by one thread at a time, the service's; Close by any thread, also from inside a notice.
template <class Sink>
class NoticeGate {
 public:
  explicit NoticeGate(std::weak_ptr<Sink> sink) : sink(std::move(sink)) {}

  // Calls notice(sink), unless the gate is closed or the sink is gone; says whether it was called. The sink is held
  // only meanwhile, and may die inside. An exception of the sink's passes through.
  template <class Notice>
  bool Deliver(Notice&& notice) {
    const NoticeScope scope;
    const Ticket ticket(*this);
    if (!ticket.open) return false;
    const std::shared_ptr<Sink> held = sink.lock();
    if (!held) return false;
    std::forward<Notice>(notice)(*held);
    return true;
  }

  // After this no notice begins; and none is running, unless the calling thread is itself delivering one.
  void Close() {
    std::unique_lock<std::mutex> lock(mutex);
    closed = true;
    if (NoticeScope::IsInside()) return;
    idle.wait(lock, [this] { return !running; });
  }

  bool IsClosed() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return closed;
  }

 private:
  struct Ticket {
    explicit Ticket(NoticeGate& gate) : gate(gate) {
      const std::lock_guard<std::mutex> lock(gate.mutex);
      open = !gate.closed;
      if (open) gate.running = true;
    }
    ~Ticket() {
      if (!open) return;
      const std::lock_guard<std::mutex> lock(gate.mutex);
      gate.running = false;
      gate.idle.notify_all();
    }
    Ticket(const Ticket&) = delete;
    Ticket& operator=(const Ticket&) = delete;

    NoticeGate& gate;
    bool open = false;
  };

  const std::weak_ptr<Sink> sink;
  mutable std::mutex mutex;
  std::condition_variable idle;
  bool running = false;
  bool closed = false;
};

}  // namespace reference

#endif
