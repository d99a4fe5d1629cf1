#include "tools/qv_connect/html_text.h"

#include <algorithm>
#include <chrono>
#include <iomanip>
#include <sstream>

#include "tools/qv_connect/console.h"

namespace qv_connect {

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char character : Printable(text)) {
    switch (character) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += character;
    }
  }
  return escaped;
}

std::string Ms(std::int64_t ms) {
  return std::to_string(ms) + "\u00a0ms";
}

std::string Change(std::int64_t ms) {
  if (ms == 0) return "as fast";
  return ms < 0 ? Ms(-ms) + " faster" : Ms(ms) + " slower";
}

std::string Percent(std::int64_t part, std::int64_t whole) {
  std::ostringstream text;
  const double share = whole > 0 ? static_cast<double>(part) / static_cast<double>(whole) : 0;
  text << std::fixed << std::setprecision(2) << std::clamp(share, 0.0, 1.0) * 100 << '%';
  return text.str();
}

std::string Utc(std::int64_t ms) {
  using namespace std::chrono;
  const sys_time<milliseconds> time{milliseconds(ms)};
  const auto day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss clock(time - day);
  std::ostringstream text;
  const auto number = [&](auto value, int digits, const char* after) {
    text << std::setw(digits) << std::setfill('0') << value << after;
  };
  number(static_cast<int>(date.year()), 4, "-");
  number(static_cast<unsigned>(date.month()), 2, "-");
  number(static_cast<unsigned>(date.day()), 2, " ");
  number(clock.hours().count(), 2, ":");
  number(clock.minutes().count(), 2, ":");
  number(clock.seconds().count(), 2, ".");
  number(clock.subseconds().count(), 3, "");
  return text.str();
}

}  // namespace qv_connect
