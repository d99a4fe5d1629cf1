// Runs every benchmark in rounds, so that what is compared is measured side by side, and prints the table of medians.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "bench/run_options.h"
#include "bench/scale.h"
#include "bench/table.h"

namespace {

void InitialiseBenchmarks(const std::string& minimumTime) {
  std::vector<std::string> texts{"qv_bench", "--benchmark_min_time=" + minimumTime};
  std::vector<char*> arguments;
  for (std::string& text : texts) arguments.push_back(text.data());
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
}

int Run(int argc, char** argv) {
  CLI::App app("Measures the library against the parts it is made of.", "qv_bench");
  bool json = false;
  bool scale = false;
  int rounds = 41;
  std::string only = ".";
  bench::RunOptions& options = bench::Options();
  app.add_flag("--json", json, "Print one JSON object instead of the table");
  app.add_flag("--quick", options.quick, "Run each benchmark for a moment only");
  app.add_flag("--scale", scale, "Measure how it grows with the number of controllers instead");
  app.add_option("--rounds", rounds)->check(CLI::Range(1, 1000))->capture_default_str();
  app.add_option("--only", only, "Run the benchmarks whose name this regular expression finds");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error);
  }
  if (scale) {
    bench::PrintScale(options.quick, std::cout);
    return EXIT_SUCCESS;
  }
  if (options.quick) rounds = 1;
  InitialiseBenchmarks(options.quick ? "0.001" : "0.01");
  // Reference counts of a process that never had a second thread are not atomic, which no host's is.
  std::thread([] {}).join();

  bench::Measurements measurements;
  for (options.round = 0; options.round < rounds; ++options.round) {
    std::fprintf(stderr, "round %d of %d\n", options.round + 1, rounds);
    if (benchmark::RunSpecifiedBenchmarks(&measurements, only) == 0) throw std::runtime_error("no benchmark ran");
  }
  bench::PrintTable(measurements, json, std::cout);
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "qv_bench: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
