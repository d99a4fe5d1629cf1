/// @file
/// Counts the threads of the services, so that a host can wait for the last one before it ends.
///
/// A service that is stopped from the outside joins its thread. One that is stopped or let go from inside a notice
/// cannot: its thread ends by itself, soon after the notice.
/// Threads: everything from any thread.
#ifndef REFERENCE_COMMON_SERVICE_THREADS_H
#define REFERENCE_COMMON_SERVICE_THREADS_H

#include <chrono>

#include "reference/common/export.h"

namespace reference {

/// Held by a thread of a service from before it starts until its last step.
class REFERENCE_COMMON_API ServiceThreadTicket {
 public:
  ServiceThreadTicket();
  ~ServiceThreadTicket();
  /// The other one then holds nothing.
  ServiceThreadTicket(ServiceThreadTicket&& other) noexcept;
  ServiceThreadTicket(const ServiceThreadTicket&) = delete;
  ServiceThreadTicket& operator=(const ServiceThreadTicket&) = delete;

 private:
  bool isHeld = true;
};

/// Says whether all of them have ended within that time. Not to be called from inside a notice.
REFERENCE_COMMON_API bool WaitForServiceThreads(std::chrono::milliseconds timeout);

}  // namespace reference

#endif
