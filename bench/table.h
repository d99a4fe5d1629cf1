// The table that a run ends in: what was measured, the floor it is held against, their ratio and the goal.
//
// Threads: one. Ownership: a Measurements keeps what the benchmarks reported.
#ifndef BENCH_TABLE_H
#define BENCH_TABLE_H

#include <benchmark/benchmark.h>

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace bench {

// What each benchmark reported in each round. Prints nothing.
class Measurements final : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;

  // Of each round; figure is a counter's name, or empty for the time in seconds. Empty when the benchmark did not run.
  std::vector<double> Of(const std::string& benchmark, const std::string& figure) const;

 private:
  std::map<std::string, std::map<std::string, std::vector<double>>> values;
};

// format takes one double.
std::string Printed(const char* format, double value);

// Prints the table as text, or as one JSON object; says whether every goal is met.
bool PrintTable(const Measurements& measurements, bool asJson, std::ostream& out);

}  // namespace bench

#endif
