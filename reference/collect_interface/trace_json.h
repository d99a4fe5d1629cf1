// Connections as an OTLP request in JSON. Each is a trace: a client span "connection", whose children are the steps
// that qv_connect's timeline shows, under the same names. A connection that had no first frame has the step that it was
// in as its last child.
//
// Threads: a pure function but for the random ids. Ownership: none.
#ifndef REFERENCE_COLLECT_INTERFACE_TRACE_JSON_H
#define REFERENCE_COLLECT_INTERFACE_TRACE_JSON_H

#include <string>
#include <vector>

#include "reference/collect_interface/connection_trace.h"

namespace collect_interface {

// Throws when there is no memory, or no good random number.
std::string TraceJson(const std::vector<ConnectionTrace>& connections);

}  // namespace collect_interface

#endif
