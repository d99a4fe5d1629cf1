// A whole connect over loopback TLS, to the first frame: through the library, and by a bare client.
#include <benchmark/benchmark.h>

#include <ctime>

#include "bench/bare_client.h"
#include "bench/cloud_in_use.h"
#include "bench/manual_times.h"
#include "bench/phone.h"
#include "bench/run_options.h"

namespace bench {
namespace {

constexpr int kDelaysMs[] = {0, 20, 50, 100};

enum class Cache { kMiss, kHit };
enum class TlsContext { kMadeEachTime, kKept };

void ThroughLibrary(benchmark::State& state, Cache cache, int delayMs) {
  const CloudInUse cloud(delayMs);
  Phone phone(cloud.BaseUrl(), "phone-1");
  phone.ConnectToFirstFrame();
  ManualTimes times(state);
  for (auto _ : state) {
    phone.Release();
    if (cache == Cache::kMiss) EmptyTheCache();
    phone.Init();
    const auto begin = Clock::now();
    phone.GetPhoneConnect();
    times.Add(phone.frontEnd->AwaitFirstFrame() - begin);
  }
}

void Bare(benchmark::State& state, Cache cache, TlsContext context) {
  const CloudInUse cloud;
  BareSession session = RequestSession(cloud.BaseUrl());
  reference::ws::TlsTrust kept;
  kept.Context();
  ManualTimes times(state);
  for (auto _ : state) {
    const auto begin = Clock::now();
    if (cache == Cache::kMiss) session = RequestSession(cloud.BaseUrl());
    reference::ws::TlsTrust fresh;
    ToFirstFrame(session, context == TlsContext::kKept ? kept : fresh);
    times.Add(Clock::now() - begin);
  }
}

double Seconds(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// Commands on a connection that stands, as the processor's time of the two threads that have to do with them: encoding
// and queueing on the caller's, encrypting and writing on the I/O thread.
void WholeCommand(benchmark::State& state) {
  constexpr int kBatch = 256;
  const CloudInUse cloud;
  Phone phone(cloud.BaseUrl(), "phone-1");
  phone.ConnectToFirstFrame();
  const clockid_t ioThread = phone.frontEnd->ClockOfNoticeThread();
  const auto used = [&] { return Seconds(CLOCK_THREAD_CPUTIME_ID) + Seconds(ioThread); };
  ManualTimes times(state);
  for (auto _ : state) {
    const double begin = used();
    for (int i = 0; i < kBatch; ++i) phone.controller->SendInReq4(1, 2);
    // The cloud echoes it, in the order of the commands.
    phone.controller->SendInReq8("echo");
    phone.frontEnd->AwaitEcho();
    times.Add(std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>((used() - begin) / kBatch)));
  }
}

[[maybe_unused]] const bool registered = [] {
  const auto add = [](const std::string& name, auto run, int iterations) {
    benchmark::RegisterBenchmark(name.c_str(), run)->UseManualTime()->Iterations(iterations);
  };
  for (const auto& [cache, name] : {std::pair(Cache::kMiss, "miss"), std::pair(Cache::kHit, "hit")}) {
    const std::string prefix = std::string("connect/") + name;
    add(
        prefix + ", bare", [cache = cache](benchmark::State& state) { Bare(state, cache, TlsContext::kMadeEachTime); },
        5);
    add(
        prefix + ", bare with a context",
        [cache = cache](benchmark::State& state) { Bare(state, cache, TlsContext::kKept); }, 5);
    add(
        prefix + ", library", [cache = cache](benchmark::State& state) { ThroughLibrary(state, cache, 0); }, 5);
  }
  add("command/whole", &WholeCommand, 3);
  for (const int delay : kDelaysMs) {
    for (const auto& [cache, name] : {std::pair(Cache::kMiss, "miss"), std::pair(Cache::kHit, "hit")}) {
      add(
          std::string("delay/") + name + ", " + std::to_string(delay) + " ms",
          [cache = cache, delay](benchmark::State& state) {
            if (IsWithinRounds(state, 3)) ThroughLibrary(state, cache, delay);
          },
          3);
    }
  }
  return true;
}();

}  // namespace
}  // namespace bench
