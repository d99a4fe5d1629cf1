/// @file
/// Counts the threads of the services, so that a host can wait for the last one before it ends.
///
/// A service that is stopped from the outside joins its thread. One that is stopped or let go from inside a notice
/// cannot: its thread ends by itself, soon after the notice.
/// Threads: everything from any thread.
#ifndef REFERENCE_COMMON_SERVICE_THREADS_H
#define REFERENCE_COMMON_SERVICE_THREADS_H

#include <chrono>
#include <cstdint>
#include <functional>

#include "reference/common/export.h"

namespace reference {

/// What makes a thread end by that time, or soon after it.
using HurryThread = std::function<void(std::chrono::steady_clock::time_point end)>;

/// Held by a thread of a service from before it starts until its last step.
class REFERENCE_COMMON_API ServiceThreadTicket {
 public:
  ServiceThreadTicket();
  /// Of a thread that would take its time: hurry is called when a host waits for the threads, on the host's thread,
  /// with the end of its patience. It may be called once more when the ticket is gone already.
  explicit ServiceThreadTicket(HurryThread hurry);
  ~ServiceThreadTicket();
  /// The other one then holds nothing.
  ServiceThreadTicket(ServiceThreadTicket&& other) noexcept;
  ServiceThreadTicket(const ServiceThreadTicket&) = delete;
  ServiceThreadTicket& operator=(const ServiceThreadTicket&) = delete;

 private:
  bool isHeld = true;
  std::uint64_t hurryNumber = 0;
};

/// Says whether all of them have ended within that time; those that would take their time are told to hurry. Not to be
/// called from inside a notice.
REFERENCE_COMMON_API bool WaitForServiceThreads(std::chrono::milliseconds timeout);

}  // namespace reference

#endif
