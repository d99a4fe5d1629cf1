// The report as one HTML page that fetches nothing: what became of each connection, at one glance and step by step.
//
// Threads: no state. Ownership: everything is a value.
#ifndef TOOLS_QV_CONNECT_HTML_PAGE_H
#define TOOLS_QV_CONNECT_HTML_PAGE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/qv_connect/history.h"

namespace qv_connect {

struct PageContent {
  std::string target;
  std::int64_t writtenMs = 0;         // since 1970-01-01 UTC
  std::size_t earlierAtMost = 0;      // how many connections before this one there may be
  std::vector<HistoryEntry> entries;  // newest first
};

// UTF-8. Texts of the collector's are escaped.
std::string HtmlPage(const PageContent& content);

}  // namespace qv_connect

#endif
