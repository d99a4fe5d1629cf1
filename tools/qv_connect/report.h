// What is left to say after the release: the waterfalls for people, one JSON object for machines, a page for browsers.
//
// Threads: no shared state. Everything is a value.
#ifndef TOOLS_QV_CONNECT_REPORT_H
#define TOOLS_QV_CONNECT_REPORT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/qv_connect/collector_store.h"
#include "tools/qv_connect/connection.h"
#include "tools/qv_connect/console.h"
#include "tools/qv_connect/milestones.h"
#include "tools/qv_connect/waterfall.h"

namespace qv_connect {

struct Report {
  std::string target;
  Outcome outcome;
  bool sessionFromCache = false;
  std::optional<std::int64_t> firstFrameMs;
  std::vector<StepLine> lines;
  std::optional<Milestones> milestones;  // of this connection, when they were asked for and are there
  std::optional<Milestones> before;      // of the connection before
};

// The waterfall of this connection, below that of the one before when there is one, on one scale.
std::string DrawReport(const Report& report, const DrawStyle& style);

std::string JsonReport(const Report& report);

// This connection, which began at or after sinceMs, and those before: an HTML page. nowMs, too, is since 1970-01-01
// UTC.
std::string PageReport(const Report& report, const std::vector<StoredConnection>& newestFirst, std::int64_t sinceMs,
                       std::int64_t nowMs);

}  // namespace qv_connect

#endif
