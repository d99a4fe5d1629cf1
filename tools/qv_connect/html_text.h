// Values as they stand on an HTML page.
//
// Threads: no shared state. Everything is a value.
#ifndef TOOLS_QV_CONNECT_HTML_TEXT_H
#define TOOLS_QV_CONNECT_HTML_TEXT_H

#include <cstdint>
#include <string>

namespace qv_connect {

// For the content of an element and for an attribute in double quotes. Control characters are replaced.
std::string Escaped(const std::string& text);

std::string Ms(std::int64_t ms);
// "3 ms slower", "4 ms faster", "as fast".
std::string Change(std::int64_t ms);
// Of the whole, to a hundredth; 0 of nothing.
std::string Percent(std::int64_t part, std::int64_t whole);
// "2026-11-23 04:05:06.007". ms since 1970-01-01 UTC.
// REQUIRES: from 1970 to 9999.
std::string Utc(std::int64_t ms);

}  // namespace qv_connect

#endif
