// Where traces go, as the host has set it.
//
// Threads: a pure function of the settings. Ownership: a value.
#ifndef REFERENCE_COLLECT_INTERFACE_TRACE_TARGET_H
#define REFERENCE_COLLECT_INTERFACE_TRACE_TARGET_H

#include <string>

#include "reference/common/http_transfer.h"

namespace collect_interface {

struct TraceTarget {
  // Empty: nothing can be sent, and problem says why in words that show nothing of the setting.
  std::string url;
  std::string problem;
  // With the port; for log lines.
  std::string host;
  reference::HttpSettings settings;
};

TraceTarget CurrentTraceTarget();

}  // namespace collect_interface

#endif
