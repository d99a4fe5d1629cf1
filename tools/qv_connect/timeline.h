// Reads milestones back from the collector's file.
//
// Threads: no shared state. Everything is a value.
#ifndef TOOLS_QV_CONNECT_TIMELINE_H
#define TOOLS_QV_CONNECT_TIMELINE_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "tools/qv_connect/milestones.h"

namespace qv_connect {

struct Timelines {
  std::optional<Milestones> current;
  std::optional<Milestones> before;
  std::string error;  // why the file could not be read; empty when it could
};

// The first connection to the target that began at or after sinceMs (since 1970-01-01 UTC), as it stood at its first
// frame or, when it did not come so far, at the end; and the last one before sinceMs that reached its first frame.
Timelines ReadTimelines(const std::filesystem::path& dataDirectory, const std::string& target, std::int64_t sinceMs);

}  // namespace qv_connect

#endif
