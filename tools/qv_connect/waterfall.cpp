#include "tools/qv_connect/waterfall.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace qv_connect {
namespace {

constexpr std::size_t kNameColumns = 20;
constexpr std::size_t kTimeColumns = 8;  // "12345 ms"
constexpr std::size_t kLeastBarColumns = 10;
constexpr std::int64_t kParts = 8;  // of a column

std::string RightAligned(const std::string& text, std::size_t columns) {
  return std::string(columns - std::min(columns, text.size()), ' ') + text;
}

std::string LeftAligned(const std::string& text, std::size_t columns) {
  return text + std::string(columns - std::min(columns, text.size()), ' ');
}

std::string Milliseconds(std::int64_t ms) {
  return RightAligned(std::to_string(ms) + " ms", kTimeColumns);
}

struct Bar {
  std::size_t offset = 0;
  std::string text;
  std::size_t columns = 0;
};

// UTF-8 has block characters that fill a column from the left only, so a bar begins at a whole column.
Bar MakeBar(const Span& span, std::int64_t scaleMs, std::size_t columns, bool utf8) {
  static constexpr std::array<const char*, kParts> kPartial = {"",       "\u258f", "\u258e", "\u258d",
                                                               "\u258c", "\u258b", "\u258a", "\u2589"};
  const auto width = static_cast<double>(columns);
  const double perMs = width / static_cast<double>(std::max<std::int64_t>(scaleMs, 1));
  const double begin = std::clamp(static_cast<double>(span.startMs) * perMs, 0.0, width - 1);
  const double end = std::clamp(static_cast<double>(span.startMs + span.durationMs) * perMs, begin, width);

  Bar bar;
  bar.offset = static_cast<std::size_t>(begin);
  const double length = end - static_cast<double>(bar.offset);
  if (!utf8) {
    bar.columns = static_cast<std::size_t>(std::max(1L, std::lround(length)));
    bar.text = std::string(bar.columns, span.durationMs > 0 ? '#' : '|');
    return bar;
  }
  const std::int64_t parts = std::max(1L, std::lround(length * static_cast<double>(kParts)));
  for (std::int64_t i = 0; i < parts / kParts; ++i) bar.text += "\u2588";
  bar.text += kPartial[static_cast<std::size_t>(parts % kParts)];
  bar.columns = static_cast<std::size_t>((parts + kParts - 1) / kParts);
  return bar;
}

}  // namespace

std::string DrawWaterfall(const std::string& title, const std::vector<Span>& spans, std::int64_t scaleMs,
                          const DrawStyle& style) {
  // Name, start, bar, duration, with two blanks before each.
  const std::size_t around = 2 + kNameColumns + kTimeColumns + 2 + 2 + kTimeColumns;
  const std::size_t barColumns = std::max(style.columns, around + kLeastBarColumns) - around;
  const std::string bold = style.colour ? "\033[1m" : "";
  const std::string bright = style.colour ? "\033[36m" : "";
  const std::string plain = style.colour ? "\033[0m" : "";

  std::string text = bold + title + plain + "\n";
  for (const Span& span : spans) {
    const Bar bar = MakeBar(span, scaleMs, barColumns, style.utf8);
    text += "  " + LeftAligned(span.name, kNameColumns) + Milliseconds(span.startMs) + "  ";
    text.append(bar.offset, ' ').append(bright).append(bar.text).append(plain);
    text.append(barColumns - std::min(barColumns, bar.offset + bar.columns) + 2, ' ');
    text += Milliseconds(span.durationMs) + "\n";
  }
  if (spans.empty()) text += "  no milestones\n";
  return text;
}

}  // namespace qv_connect
