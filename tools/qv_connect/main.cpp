// qv_connect: a front end of qv_data_interface on the command line.
#include <chrono>
#include <exception>
#include <iostream>

#include "qv_data_interface/data_interface.h"
#include "tools/qv_connect/collector_store.h"
#include "tools/qv_connect/connection.h"
#include "tools/qv_connect/history.h"
#include "tools/qv_connect/host_system.h"
#include "tools/qv_connect/interrupt.h"
#include "tools/qv_connect/options.h"
#include "tools/qv_connect/output_file.h"
#include "tools/qv_connect/report.h"

namespace qv_connect {
namespace {

std::int64_t WallClockMs() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

// The services that the library comes with read their settings from the environment.
bool TellServices(const Options& options) {
  const std::pair<const char*, const std::string&> settings[] = {{"QV_REFERENCE_DATA_DIR", options.dataDir},
                                                                 {"QV_REFERENCE_CA_FILE", options.caFile},
                                                                 {"QV_REFERENCE_PROXY", options.proxy}};
  for (const auto& [name, value] : settings) {
    if (!value.empty() && !SetEnvironment(name, value)) return false;
  }
  return true;
}

DrawStyle StyleFor(bool isTerminal) {
  DrawStyle style;
  style.columns = TerminalColumns();
  style.utf8 = OutputTakesUtf8();
  style.colour = isTerminal && ColourIsWelcome();
  return style;
}

// For the comparison many connections may have failed since the one before that reached its first frame.
constexpr std::size_t kConnectionsRead = 200;

void TakeTimelines(const Options& options, std::int64_t sinceMs, const std::vector<StoredConnection>& connections,
                   Report& report) {
  const StoredConnection* const current = FindThis(connections, sinceMs);
  const StoredConnection* const before = options.compare ? FindBefore(connections, sinceMs) : nullptr;
  if (current != nullptr) report.milestones = MilestonesOf(*current);
  if (before != nullptr) report.before = MilestonesOf(*before);
}

// False when the page was wanted and could not be written; the error output then says why. A page is written even when
// the collector knows nothing: with what this program saw of the connection.
bool TellWhatWasCollected(const Options& options, std::int64_t sinceMs, Report& report) {
  if (!options.timeline && options.reportFile.empty()) return true;
  std::vector<StoredConnection> connections;
  std::string missing;
  try {
    connections = ReadConnections(options.dataDir, options.target, kConnectionsRead);
    if (FindThis(connections, sinceMs) == nullptr) {
      missing = "the collector's file holds no milestones of this connection";
    }
  } catch (const std::runtime_error& error) {
    missing = error.what();
  }
  if (!missing.empty()) std::cerr << "qv_connect: no timeline: " << missing << std::endl;
  if (options.timeline) TakeTimelines(options, sinceMs, connections, report);
  if (options.reportFile.empty()) return true;
  const std::string why = WriteFile(options.reportFile, PageReport(report, connections, sinceMs, WallClockMs()));
  if (!why.empty()) std::cerr << "qv_connect: " << options.reportFile << " cannot be written: " << why << std::endl;
  return why.empty();
}

int Run(int argc, const char* const* argv) {
  const Clock::time_point start = Clock::now();
  const std::int64_t startMs = WallClockMs();
  std::ios::sync_with_stdio(false);
  InstallInterruptHandler();
  Options options;
  if (const std::optional<int> exitCode = ParseOptions(argc, argv, options)) return *exitCode;
  if (!TellServices(options)) {
    std::cerr << "qv_connect: the environment cannot be set" << std::endl;
    return kExitInternal;
  }

  std::ostream& human = options.json ? std::cerr : std::cout;
  qv_data_interface::IQVDataInterface::SetLogParam(&options.log);
  Console console(human, start);
  Connection connection(options, console);
  Report report;
  report.target = options.target;
  report.outcome = connection.Run();
  report.sessionFromCache = connection.SessionFromCache();
  report.firstFrameMs = connection.FirstFrameMs();
  report.lines = console.Lines();
  const bool told = TellWhatWasCollected(options, startMs, report);

  human << DrawReport(report, StyleFor(options.json ? ErrorOutputIsTerminal() : OutputIsTerminal())) << std::flush;
  if (options.json) std::cout << JsonReport(report) << std::flush;
  if (report.outcome.exitCode != kExitSuccess) {
    const std::string where = report.outcome.step.empty() ? "" : "failed at " + report.outcome.step + ": ";
    std::cerr << "qv_connect: " << where << Printable(report.outcome.message) << std::endl;
  }
  return report.outcome.exitCode == kExitSuccess && !told ? kExitInternal : report.outcome.exitCode;
}

}  // namespace
}  // namespace qv_connect

int main(int argc, char** argv) {
  try {
    return qv_connect::Run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "qv_connect: " << error.what() << std::endl;
    return qv_connect::kExitInternal;
  }
}
