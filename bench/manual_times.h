// Times that a benchmark takes itself, one an iteration. Their median counts: one iteration in which the system did
// something else says nothing about the others.
#ifndef BENCH_MANUAL_TIMES_H
#define BENCH_MANUAL_TIMES_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "bench/services.h"

namespace bench {

inline constexpr char kMedianSeconds[] = "median";

class ManualTimes {
 public:
  explicit ManualTimes(benchmark::State& state) : state(state) {}
  ~ManualTimes() {
    if (times.empty()) return;
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    state.counters[kMedianSeconds] = *middle;
  }
  ManualTimes(const ManualTimes&) = delete;
  ManualTimes& operator=(const ManualTimes&) = delete;

  void Add(Clock::duration time) {
    times.push_back(std::chrono::duration<double>(time).count());
    state.SetIterationTime(times.back());
  }

 private:
  benchmark::State& state;
  std::vector<double> times;
};

}  // namespace bench

#endif
