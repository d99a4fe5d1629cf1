// Lines that have no file yet: written before the log was started, or while its file cannot be written.
//
// Bounded: the first ones are kept, since they tell how things began; those past the bound are counted.
// Threads: none of its own; guarded by its owner.
#ifndef REFERENCE_BASE_WAITING_LINES_H
#define REFERENCE_BASE_WAITING_LINES_H

#include <cstddef>
#include <utility>
#include <vector>

#include "reference/base/log_line.h"

namespace base {

class WaitingLines {
 public:
  static constexpr std::size_t kMaxLines = 1000;
  static constexpr std::size_t kMaxBytes = 256 * 1024;

  void Add(LogLine line) {
    // A short line must not slip in behind a gap, so the first one dropped ends the keeping.
    if (dropped > 0 || lines.size() >= kMaxLines || line.text.size() > kMaxBytes - bytes) {
      ++dropped;
      return;
    }
    bytes += line.text.size();
    lines.push_back(std::move(line));
  }

  // What was kept, in order, and how many lines after it were dropped. Empty afterwards.
  std::pair<std::vector<LogLine>, std::size_t> Take() {
    bytes = 0;
    return {std::exchange(lines, {}), std::exchange(dropped, 0)};
  }

 private:
  std::vector<LogLine> lines;
  std::size_t bytes = 0;
  std::size_t dropped = 0;
};

}  // namespace base

#endif
