#include "telemetry/clock.h"

#include <chrono>

namespace qv_data_interface {

std::int64_t NowMs() {
  using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
  constexpr std::int64_t kTicksPerMs = 10'000;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<Ticks>(now).count() / kTicksPerMs;
}

}  // namespace qv_data_interface
