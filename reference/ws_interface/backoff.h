// How long to pause before the next attempt: anything between 0 and a limit that doubles with each failure in a row, so
// that the clients of a cloud that comes back do not all arrive at once.
//
// Threads: one at a time. Ownership: a value.
#ifndef REFERENCE_WS_INTERFACE_BACKOFF_H
#define REFERENCE_WS_INTERFACE_BACKOFF_H

#include <algorithm>
#include <chrono>
#include <random>

namespace reference::ws {

class Backoff {
 public:
  static constexpr std::chrono::milliseconds kFirstLimit{100};
  static constexpr std::chrono::milliseconds kLastLimit{10000};

  explicit Backoff(std::uint32_t seed) : random(seed) {}

  std::chrono::milliseconds Next() {
    std::uniform_int_distribution<std::chrono::milliseconds::rep> pause(0, limit.count());
    limit = std::min(limit * 2, kLastLimit);
    return std::chrono::milliseconds(pause(random));
  }

  void Reset() { limit = kFirstLimit; }

 private:
  std::minstd_rand random;
  std::chrono::milliseconds limit = kFirstLimit;
};

}  // namespace reference::ws

#endif
