#include "tools/qv_connect/console.h"

#include <iomanip>

namespace qv_connect {

std::string Printable(const std::string& text) {
  std::string printable = text;
  for (std::size_t i = 0; i < printable.size(); ++i) {
    const auto byte = static_cast<unsigned char>(printable[i]);
    // U+0080 to U+009F are control characters too; in UTF-8 their first byte is 0xC2.
    const bool isUpperControl = i > 0 && static_cast<unsigned char>(text[i - 1]) == 0xC2 && byte >= 0x80 && byte < 0xA0;
    if (byte < 0x20 || byte == 0x7F) printable[i] = '?';
    if (isUpperControl) printable.replace(i - 1, 2, "??");
  }
  return printable;
}

void Console::Step(Clock::time_point at, const std::string& step, const std::string& text) {
  lines.push_back({SinceStartMs(at), step, text});
  out << std::setw(6) << lines.back().atMs << " ms  " << std::left << std::setw(16) << step << std::right
      << Printable(text) << std::endl;
}

void Console::Text(const std::string& text) {
  out << text << std::flush;
}

std::int64_t Console::SinceStartMs(Clock::time_point at) const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(at - start).count();
}

}  // namespace qv_connect
