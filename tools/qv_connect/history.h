// What became of each connection: its steps, the slowest of them, what went wrong, better or worse than the one before.
//
// Threads: no shared state. Ownership: everything is a value.
#ifndef TOOLS_QV_CONNECT_HISTORY_H
#define TOOLS_QV_CONNECT_HISTORY_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/qv_connect/collector_store.h"
#include "tools/qv_connect/milestones.h"

namespace qv_connect {

enum class StepState { kDone, kEndedHere, kNotReached };

struct HistoryStep {
  Span span;
  StepState state = StepState::kDone;
  std::optional<std::int64_t> changeMs;  // against the last connection before that reached its first frame
};

struct HistoryError {
  std::string code;
  std::string requestTag;    // what the cloud service finds the request by; may be empty
  std::size_t count = 0;     // how often it came
  std::int64_t firstMs = 0;  // since the connection began
  std::int64_t latestMs = 0;
};

struct HistoryEvent {
  std::int64_t atMs = 0;  // since the connection began
  std::string text;
};

struct HistoryEntry {
  std::int64_t beginMs = 0;  // since 1970-01-01 UTC
  std::string process;
  bool isThis = false;
  bool reachedFirstFrame = false;
  std::optional<bool> sessionFromCache;  // empty when it came to no session
  std::int64_t totalMs = 0;              // to the first frame; without one to the end
  std::optional<std::int64_t> changeMs;  // as of a step
  std::vector<HistoryStep> steps;        // in the order of a connection
  std::optional<std::size_t> slowest;    // of steps; empty when none took time
  std::vector<HistoryError> errors;      // one for each code, in the order in which they came
  std::vector<HistoryEvent> events;      // changes of line, renewals of the session
  std::string failure;                   // what the program itself said; of this connection only
};

// The first connection that began at or after sinceMs, which is this one; null when there is none.
const StoredConnection* FindThis(const std::vector<StoredConnection>& newestFirst, std::int64_t sinceMs);

// The last connection before sinceMs that reached its first frame; null when there is none.
const StoredConnection* FindBefore(const std::vector<StoredConnection>& newestFirst, std::int64_t sinceMs);

// A message is a snapshot of all milestones so far, and a later change of line replaces some of them: these are those
// of the first frame or, when the connection did not come so far, of the attempt that came furthest.
const Milestones& MilestonesOf(const StoredConnection& connection);

// In the same order.
std::vector<HistoryEntry> HistoryOf(const std::vector<StoredConnection>& newestFirst);

}  // namespace qv_connect

#endif
