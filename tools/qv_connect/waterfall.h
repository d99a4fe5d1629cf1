// Draws spans as a waterfall: one line a span, its bar below and to the right of the one before.
//
// Threads: no shared state. Everything is a value.
#ifndef TOOLS_QV_CONNECT_WATERFALL_H
#define TOOLS_QV_CONNECT_WATERFALL_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/qv_connect/milestones.h"

namespace qv_connect {

struct DrawStyle {
  std::size_t columns = 80;
  bool utf8 = false;  // bars of block characters, to an eighth of a column; otherwise of #
  bool colour = false;
};

// scaleMs fills the width of the bars; give two waterfalls the same one to compare them by eye. A bar is never wider
// than its place and never invisible.
std::string DrawWaterfall(const std::string& title, const std::vector<Span>& spans, std::int64_t scaleMs,
                          const DrawStyle& style);

}  // namespace qv_connect

#endif
