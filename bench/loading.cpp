// The time that loading takes, each time in a new process; and a library with nothing in it.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include "bench/manual_times.h"

namespace bench {
namespace {

void Load(benchmark::State& state, const char* library) {
  ManualTimes times(state);
  for (auto _ : state) {
    const std::string command = std::string("'" QV_LOADER_PROGRAM "' '") + library + "'";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> output(popen(command.c_str(), "re"), &pclose);
    long long nanoseconds = 0;
    if (!output || std::fscanf(output.get(), "%lld", &nanoseconds) != 1) {
      throw std::runtime_error(std::string(library) + " cannot be loaded");
    }
    times.Add(std::chrono::nanoseconds(nanoseconds));
  }
}

BENCHMARK_CAPTURE(Load, empty, QV_EMPTY_LIBRARY)->Name("load/empty library")->UseManualTime()->Iterations(2);
BENCHMARK_CAPTURE(Load, library, QV_LIBRARY)->Name("load/library")->UseManualTime()->Iterations(2);

}  // namespace
}  // namespace bench
