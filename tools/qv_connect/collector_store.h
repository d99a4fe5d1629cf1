// Reads connections back from the collector's file.
//
// Threads: no shared state. Ownership: everything is a value.
#ifndef TOOLS_QV_CONNECT_COLLECTOR_STORE_H
#define TOOLS_QV_CONNECT_COLLECTOR_STORE_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/qv_connect/milestones.h"

namespace qv_connect {

// A status message: docs/telemetry.md says when each is sent. Times are ms since 1970-01-01 UTC.
struct StoredMessage {
  int type = 0;
  int status = 0;
  std::int64_t atMs = 0;
  std::string session;              // a digest, which tells sessions apart; empty when there was none
  std::int64_t sessionSinceMs = 0;  // when the first connection that is known to have had this session began
  std::string errorCode;            // empty for none
  std::string requestTag;
  Milestones milestones;  // all so far
};

struct StoredConnection {
  std::int64_t beginMs = 0;
  std::string process;
  std::vector<StoredMessage> messages;  // in the order in which they came; not empty
};

// The newest connections to the target, at most limit, newest first. Throws std::runtime_error, which names the file,
// when it cannot be read.
std::vector<StoredConnection> ReadConnections(const std::filesystem::path& dataDirectory, const std::string& target,
                                              std::size_t limit);

}  // namespace qv_connect

#endif
