#include "tools/qv_connect/milestones.h"

#include <algorithm>

namespace qv_connect {
namespace {

constexpr const char* kBegin = "startGetInstanceInfo";

constexpr struct {
  const char* name;
  const char* from;
  const char* to;
} kSpans[] = {
    {"phone-connect", kBegin, "endGetInstanceInfo"},        {"resolve the name", "startConnect", "dnsParseSucc"},
    {"TCP, TLS, WebSocket", "dnsParseSucc", "connectSucc"}, {"authentication", "startAuth", "onAuthR"},
    {"choose the format", "onAuthR", "sendPlay"},           {"play", "sendPlay", "onPlayR"},
    {"first frame", "onPlayR", "recvFirstFrame"},
};

}  // namespace

std::vector<Span> SpansOf(const Milestones& milestones) {
  std::vector<Span> spans;
  const auto begin = milestones.find(kBegin);
  if (begin == milestones.end()) return spans;
  for (const auto& span : kSpans) {
    const auto from = milestones.find(span.from);
    const auto to = milestones.find(span.to);
    if (from == milestones.end() || to == milestones.end()) continue;
    if (from->second < begin->second || to->second < from->second) continue;
    spans.push_back({span.name, from->second - begin->second, to->second - from->second});
  }
  return spans;
}

std::vector<std::string> SpanNames() {
  std::vector<std::string> names;
  for (const auto& span : kSpans) names.emplace_back(span.name);
  return names;
}

std::int64_t TotalMs(const std::vector<Span>& spans) {
  std::int64_t total = 0;
  for (const Span& span : spans) total = std::max(total, span.startMs + span.durationMs);
  return total;
}

}  // namespace qv_connect
