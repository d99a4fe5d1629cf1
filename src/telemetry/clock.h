// The time base of milestones, status times and the session cache.
#ifndef TELEMETRY_CLOCK_H
#define TELEMETRY_CLOCK_H

#include <cstdint>

namespace qv_data_interface {

// The system clock: milliseconds since 1970-01-01 UTC, rounded toward zero. From any thread.
std::int64_t NowMs();

}  // namespace qv_data_interface

#endif
