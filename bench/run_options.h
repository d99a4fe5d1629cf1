// How this run was asked to be, and which round is on.
#ifndef BENCH_RUN_OPTIONS_H
#define BENCH_RUN_OPTIONS_H

#include <benchmark/benchmark.h>

namespace bench {

struct RunOptions {
  bool quick = false;
  int round = 0;
};

inline RunOptions& Options() {
  static RunOptions options;
  return options;
}

// For what takes too long to be repeated in every round: says whether this is one of the first; otherwise the benchmark
// counts as not run, and is to return at once.
inline bool IsWithinRounds(benchmark::State& state, int rounds) {
  const bool isWithin = Options().round < rounds;
  if (!isWithin) state.SkipWithError("not in this round");
  return isWithin;
}

}  // namespace bench

#endif
