#include "reference/common/service_threads.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace reference {
namespace {

struct Count {
  std::mutex mutex;
  std::condition_variable changed;
  int running = 0;
};

// Never destroyed: a thread may end after the process has begun to.
Count& TheCount() {
  static Count& count = *new Count;
  return count;
}

void Add(int change) {
  Count& count = TheCount();
  const std::lock_guard<std::mutex> lock(count.mutex);
  count.running += change;
  count.changed.notify_all();
}

}  // namespace

ServiceThreadTicket::ServiceThreadTicket() {
  Add(1);
}

ServiceThreadTicket::~ServiceThreadTicket() {
  if (isHeld) Add(-1);
}

ServiceThreadTicket::ServiceThreadTicket(ServiceThreadTicket&& other) noexcept
    : isHeld(std::exchange(other.isHeld, false)) {}

bool WaitForServiceThreads(std::chrono::milliseconds timeout) {
  Count& count = TheCount();
  std::unique_lock<std::mutex> lock(count.mutex);
  return count.changed.wait_for(lock, timeout, [&count] { return count.running == 0; });
}

}  // namespace reference
