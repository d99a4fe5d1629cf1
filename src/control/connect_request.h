// Whether a phone connect has been asked for, and for which generation of the connection.
//
// Threads: every operation from any thread. One word holds both, so that a call which a release overtook can neither
// open nor close anything for the generation after it.
#ifndef CONTROL_CONNECT_REQUEST_H
#define CONTROL_CONNECT_REQUEST_H

#include <atomic>
#include <cstdint>

namespace qv_data_interface {

class ConnectRequest {
 public:
  // Of all calls in one generation, one is let through until it gives up. Generations count from 1.
  bool Claim(std::uint32_t generation) {
    std::uint64_t current = word;
    while (GenerationOf(current) < generation) {
      if (word.compare_exchange_weak(current, InProgress(generation))) return true;
    }
    return false;
  }

  // The claimed connect has been issued, or served from the cache.
  void Confirm(std::uint32_t generation) {
    std::uint64_t expected = InProgress(generation);
    word.compare_exchange_strong(expected, expected | 1);
  }

  // The claimed connect came to nothing, and may be tried again. Does nothing once it is confirmed.
  void GiveUp(std::uint32_t generation) {
    std::uint64_t expected = InProgress(generation);
    word.compare_exchange_strong(expected, 0);
  }

  bool IsConfirmed(std::uint32_t generation) const { return word == (InProgress(generation) | 1); }

 private:
  static std::uint64_t InProgress(std::uint32_t generation) { return std::uint64_t{generation} << 1; }
  static std::uint64_t GenerationOf(std::uint64_t word) { return word >> 1; }

  // The generation, and in the lowest bit whether its connect is confirmed; 0 when nothing has been asked for.
  std::atomic<std::uint64_t> word{0};
};

}  // namespace qv_data_interface

#endif
