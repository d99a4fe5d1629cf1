#include "bench/table.h"

#include <json/json.h>

#include <algorithm>
#include <cstdio>

#include "bench/machine.h"
#include "bench/manual_times.h"
#include "bench/run_options.h"

namespace bench {
namespace {

enum class Unit { kTime, kBytes, kCount };

struct Row {
  const char* measured;
  const char* benchmark;
  const char* floor;           // in words; empty when there is none
  const char* floorBenchmark;  // empty when there is none
  std::optional<double> goal;  // highest ratio, or highest figure without a floor; none: published only
  Unit unit = Unit::kTime;
  const char* counter = "";  // of the benchmark, instead of its time
};

constexpr Row kRows[] = {
    {"forwarded command, 1 thread", "forward/1 thread", "virtual call through a copied shared_ptr behind a mutex",
     "forward/floor", 1.1},
    {"forwarded command, 2 threads on one controller", "forward/2 threads", "the same, 1 thread", "forward/1 thread",
     1.3},
    {"forwarded command, 1,000 swaps a second", "forward/swaps", "the same without swaps", "forward/1 thread", 1.15},
    {"forwarded command", "forward/1 thread", "the whole command to the socket", "command/whole", 0.03},
    {"allocations in a forwarded command", "forward/1 thread", "", "", 0, Unit::kCount, "allocations"},
    {"RecordMilestone of a known name", "milestone/known name", "locked find in a map of 10", "milestone/floor", 1.3},
    {"allocations in it", "milestone/known name", "", "", 0, Unit::kCount, "allocations"},
    {"SendMessageCollect", "message/send", "one copy of the status and two make_shared", "message/floor", 1.05},
    {"cache hit, from GetPhoneConnect to CreateWS", "cache hit/library",
     "lookup, decode, verify, decrypt and parse, called bare", "cache hit/floor", 1.15},
    {"cache write after a granted answer", "cache write/library", "serialise, encrypt, encode and upsert, called bare",
     "cache write/floor", 1.15},
    {"connect over TLS with a miss, to the first frame", "connect/miss, library", "bare client, the same calls",
     "connect/miss, bare", 1.05},
    {"connect over TLS with a hit, to the first frame", "connect/hit, library", "bare client, the same calls",
     "connect/hit, bare", 1.05},
    {"the same with a miss",
     "connect/miss, library",
     "bare client with a TLS context it has",
     "connect/miss, bare with a context",
     {}},
    {"the same with a hit",
     "connect/hit, library",
     "bare client with a TLS context it has",
     "connect/hit, bare with a context",
     {}},
    {"connect with a hit, 0 ms of delay", "delay/hit, 0 ms", "with a miss", "delay/miss, 0 ms", {}},
    {"connect with a hit, 20 ms of delay", "delay/hit, 20 ms", "with a miss", "delay/miss, 20 ms", {}},
    {"connect with a hit, 50 ms of delay", "delay/hit, 50 ms", "with a miss", "delay/miss, 50 ms", {}},
    {"connect with a hit, 100 ms of delay", "delay/hit, 100 ms", "with a miss", "delay/miss, 100 ms", {}},
    {"memory of an idle controller", "memory/controllers", "", "", {}, Unit::kBytes, "idle"},
    {"memory of a connected controller", "memory/controllers", "", "", {}, Unit::kBytes, "connected"},
    {"growth of the heap a connect, 5,001st to 10,000th", "memory/growth", "", "", 16, Unit::kBytes, "growth"},
    {"loading the library", "load/library", "dlopen of an empty library", "load/empty library", {}},
};

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

struct Result {
  const Row& row;
  double measured = 0;
  std::optional<double> floor;
  std::optional<double> ratio;

  // The figures of a moment mean nothing, so nothing is judged by them.
  bool HasGoal() const { return row.goal.has_value() && !Options().quick; }
  bool IsMet() const { return !HasGoal() || ratio.value_or(measured) <= *row.goal; }
};

// A ratio is taken round by round, since measured and floor stand side by side there and the machine's mood has no part
// in it.
// Nothing when one of the two did not run.
std::optional<Result> Evaluate(const Row& row, const Measurements& measurements) {
  const std::vector<double> measured = measurements.Of(row.benchmark, row.counter);
  if (measured.empty()) return std::nullopt;
  Result result{row, Median(measured), {}, {}};
  if (*row.floorBenchmark == '\0') return result;
  const std::vector<double> floor = measurements.Of(row.floorBenchmark, row.counter);
  if (floor.empty()) return std::nullopt;
  std::vector<double> ratios;
  for (std::size_t i = 0; i < std::min(measured.size(), floor.size()); ++i) ratios.push_back(measured[i] / floor[i]);
  result.floor = Median(floor);
  result.ratio = Median(ratios);
  return result;
}

std::string Figure(double value, Unit unit) {
  if (unit == Unit::kCount) return Printed("%.3g", value);
  if (unit == Unit::kBytes) return value < 1024 ? Printed("%.2f B", value) : Printed("%.1f KiB", value / 1024);
  if (value < 1e-6) return Printed("%.1f ns", value * 1e9);
  if (value < 1e-3) return Printed("%.2f µs", value * 1e6);
  return Printed("%.2f ms", value * 1e3);
}

Json::Value ToJson(const Result& result) {
  constexpr const char* kUnits[] = {"s", "B", "1"};
  Json::Value row;
  row["measured"] = result.row.measured;
  row["value"] = result.measured;
  row["unit"] = kUnits[static_cast<std::size_t>(result.row.unit)];
  if (result.floor) {
    row["floor"] = result.row.floor;
    row["floorValue"] = *result.floor;
    row["ratio"] = *result.ratio;
  }
  if (result.HasGoal()) {
    row["goal"] = *result.row.goal;
    row["met"] = result.IsMet();
  }
  return row;
}

void PrintRow(const Result& result, std::ostream& out) {
  const Row& row = result.row;
  out << "| " << row.measured << " | " << Figure(result.measured, row.unit) << " | ";
  if (result.floor) out << row.floor << " | " << Figure(*result.floor, row.unit) << " | ";
  out << (result.floor ? Printed("%.3f", *result.ratio) : "— | — | —") << " | ";
  if (!result.HasGoal()) {
    out << (Options().quick ? "— | |\n" : "published | |\n");
    return;
  }
  out << "≤ " << Printed("%g", *row.goal) << " | " << (result.IsMet() ? "met" : "NOT MET") << " |\n";
}

}  // namespace

std::string Printed(const char* format, double value) {
  char text[64];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

bool Measurements::ReportContext(const Context&) {
  return true;
}

void Measurements::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.error_occurred) continue;
    auto& figures = values[run.run_name.function_name];
    for (const auto& [name, counter] : run.counters) figures[name].push_back(counter.value);
    const auto median = run.counters.find(kMedianSeconds);
    const bool hasMedian = median != run.counters.end();
    // The processor's time: on a machine that others use as well, the wall clock counts their work too.
    figures[""].push_back(hasMedian ? median->second.value
                                    : run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit));
  }
}

std::vector<double> Measurements::Of(const std::string& benchmark, const std::string& figure) const {
  const auto ofBenchmark = values.find(benchmark);
  if (ofBenchmark == values.end()) return {};
  const auto found = ofBenchmark->second.find(figure);
  return found != ofBenchmark->second.end() ? found->second : std::vector<double>();
}

bool PrintTable(const Measurements& measurements, bool asJson, std::ostream& out) {
  bool allMet = true;
  Json::Value rows(Json::arrayValue);
  if (!asJson) {
    out << Machine() << "\n\n"
        << "| measured | figure | floor | figure | ratio | goal | |\n|---|---:|---|---:|---:|---:|---|\n";
  }
  for (const Row& row : kRows) {
    const std::optional<Result> result = Evaluate(row, measurements);
    if (!result) continue;
    allMet = allMet && result->IsMet();
    if (asJson) {
      rows.append(ToJson(*result));
    } else {
      PrintRow(*result, out);
    }
  }
  if (asJson) {
    Json::Value document;
    document["machine"] = Machine();
    document["rows"] = rows;
    if (!Options().quick) document["allGoalsMet"] = allMet;
    out << document.toStyledString();
  }
  return allMet;
}

}  // namespace bench
