// The lines for people: one a step, with its time since the start.
//
// Threads: the main thread only. Ownership: keeps every line for the JSON report; the stream belongs to the caller.
#ifndef TOOLS_QV_CONNECT_CONSOLE_H
#define TOOLS_QV_CONNECT_CONSOLE_H

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "tools/qv_connect/events.h"

namespace qv_connect {

struct StepLine {
  std::int64_t atMs = 0;
  std::string step;
  std::string text;
};

// The text with control characters replaced: what the cloud sends must not steer the terminal.
std::string Printable(const std::string& text);

class Console {
 public:
  Console(std::ostream& out, Clock::time_point start) : out(out), start(start) {}

  void Step(Clock::time_point at, const std::string& step, const std::string& text);
  void Step(const std::string& step, const std::string& text) { Step(Clock::now(), step, text); }
  // Without a time; not part of the report.
  void Text(const std::string& text);

  std::int64_t SinceStartMs(Clock::time_point at) const;
  const std::vector<StepLine>& Lines() const { return lines; }

 private:
  std::ostream& out;
  const Clock::time_point start;
  std::vector<StepLine> lines;
};

}  // namespace qv_connect

#endif
