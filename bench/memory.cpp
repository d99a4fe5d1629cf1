// What a controller costs in memory, and whether connecting again and again costs more and more.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "bench/cloud_in_use.h"
#include "bench/phone.h"
#include "bench/process.h"
#include "bench/run_options.h"

namespace bench {
namespace {

void Controllers(benchmark::State& state) {
  if (!IsWithinRounds(state, 1)) return;
  const int count = Options().quick ? 5 : 100;
  const CloudInUse cloud;
  // So that what the process allocates once is there before it is counted.
  Phone(cloud.BaseUrl(), "phone-1").ConnectToFirstFrame();
  std::vector<std::unique_ptr<Phone>> phones;
  const auto perController = [&, before = CountHoldings().heapBytes] {
    return static_cast<double>(CountHoldings().heapBytes - before) / count;
  };
  for (auto _ : state) {
    for (int i = 0; i < count; ++i) {
      phones.push_back(std::make_unique<Phone>(cloud.BaseUrl(), "phone-" + std::to_string(i)));
      phones.back()->Init();
    }
    state.counters["idle"] = perController();
    for (const auto& phone : phones) {
      phone->GetPhoneConnect();
      phone->frontEnd->AwaitFirstFrame();
    }
    state.counters["connected"] = perController();
  }
}

// The second half counts: in the first one the databases fill the page caches that SQLite allows each, 2 MiB. Every
// tenth connect finds no session in the cache, for it is another phone's.
void Growth(benchmark::State& state) {
  if (!IsWithinRounds(state, 1)) return;
  const int connects = Options().quick ? 20 : 10000;
  const CloudInUse cloud;
  int connect = 0;
  const auto connectAgain = [&](int times) {
    for (const int end = connect + times; connect < end; ++connect) {
      Phone(cloud.BaseUrl(), "phone-" + std::to_string(connect / 10 % 100)).ConnectToFirstFrame();
    }
  };
  for (auto _ : state) {
    connectAgain(connects / 2);
    const std::int64_t before = CountHoldings().heapBytes;
    connectAgain(connects / 2);
    state.counters["growth"] = static_cast<double>(CountHoldings().heapBytes - before) / (connects / 2);
  }
}

BENCHMARK(Controllers)->Name("memory/controllers")->Iterations(1);
BENCHMARK(Growth)->Name("memory/growth")->Iterations(1);

}  // namespace
}  // namespace bench
