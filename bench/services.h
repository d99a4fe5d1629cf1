// The two services of which the benchmarks need a silent kind beside the real one: a WebSocket manager whose
// connections do nothing, and a collector that drops what it is given. What is measured is then the library alone.
//
// Threads: the switch and the moment belong to the thread that measures. Ownership: none.
#ifndef BENCH_SERVICES_H
#define BENCH_SERVICES_H

#include <chrono>
#include <memory>

#include "ws_interface/ws_interface.h"

namespace bench {

using Clock = std::chrono::steady_clock;

// Which kind the factories hand out from now on. At first the silent one.
void UseRealServices(bool real);

// When the silent manager was last asked for a connection.
Clock::time_point LastCreateWs();

std::shared_ptr<ws_interface::IWSInterface> MakeSilentConnection();

}  // namespace bench

#endif
