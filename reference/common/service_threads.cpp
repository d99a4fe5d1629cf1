#include "reference/common/service_threads.h"

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <utility>

namespace reference {
namespace {

struct Count {
  std::mutex mutex;
  std::condition_variable changed;
  int running = 0;
  // By rising numbers from 1.
  std::map<std::uint64_t, HurryThread> hurries;
  std::uint64_t lastNumber = 0;
};

// Never destroyed: a thread may end after the process has begun to.
Count& TheCount() {
  static Count& count = *new Count;
  return count;
}

}  // namespace

ServiceThreadTicket::ServiceThreadTicket() {
  Count& count = TheCount();
  const std::lock_guard<std::mutex> lock(count.mutex);
  ++count.running;
}

ServiceThreadTicket::ServiceThreadTicket(HurryThread hurry) {
  Count& count = TheCount();
  const std::lock_guard<std::mutex> lock(count.mutex);
  count.hurries.emplace(count.lastNumber + 1, std::move(hurry));
  hurryNumber = ++count.lastNumber;
  ++count.running;
  count.changed.notify_all();
}

ServiceThreadTicket::~ServiceThreadTicket() {
  if (!isHeld) return;
  Count& count = TheCount();
  // Destroyed after the lock, with whatever it holds.
  std::map<std::uint64_t, HurryThread>::node_type hurry;
  const std::lock_guard<std::mutex> lock(count.mutex);
  hurry = count.hurries.extract(hurryNumber);
  --count.running;
  count.changed.notify_all();
}

ServiceThreadTicket::ServiceThreadTicket(ServiceThreadTicket&& other) noexcept
    : isHeld(std::exchange(other.isHeld, false)), hurryNumber(other.hurryNumber) {}

bool WaitForServiceThreads(std::chrono::milliseconds timeout) {
  // A bound that can be added to any time; std::chrono::milliseconds::max() cannot.
  constexpr std::chrono::milliseconds kForEver = std::chrono::hours(24 * 365);
  const auto end = std::chrono::steady_clock::now() + std::min(timeout, kForEver);
  Count& count = TheCount();
  std::uint64_t told = 0;
  std::unique_lock<std::mutex> lock(count.mutex);
  while (count.running > 0) {
    // One that starts during the wait is told as well.
    const auto next = count.hurries.upper_bound(told);
    if (next == count.hurries.end()) {
      if (count.changed.wait_until(lock, end) == std::cv_status::timeout) break;
      continue;
    }
    told = next->first;
    const HurryThread hurry = next->second;
    lock.unlock();
    hurry(end);
    lock.lock();
  }
  return count.running == 0;
}

}  // namespace reference
