// A connection's milestones, and the spans of work between them.
//
// Threads: no shared state. Everything is a value.
#ifndef TOOLS_QV_CONNECT_MILESTONES_H
#define TOOLS_QV_CONNECT_MILESTONES_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace qv_connect {

// Name to ms since 1970-01-01 UTC.
using Milestones = std::map<std::string, std::int64_t>;

struct Span {
  std::string name;
  std::int64_t startMs = 0;  // since the connection began
  std::int64_t durationMs = 0;
};

// In the order of a connection. A span with a milestone missing, or with times that run backwards because the clock was
// set, is left out.
std::vector<Span> SpansOf(const Milestones& milestones);

// The names of all spans, in the order of a connection.
std::vector<std::string> SpanNames();

// To the end of the last span.
std::int64_t TotalMs(const std::vector<Span>& spans);

}  // namespace qv_connect

#endif
