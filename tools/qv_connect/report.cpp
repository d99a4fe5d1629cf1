#include "tools/qv_connect/report.h"

#include <json/json.h>

#include <algorithm>
#include <sstream>

#include "tools/qv_connect/history.h"
#include "tools/qv_connect/html_page.h"

namespace qv_connect {
namespace {

constexpr std::size_t kEarlierOnPage = 20;

std::string Title(const std::string& which, const std::vector<Span>& spans) {
  return which + ": " + std::to_string(TotalMs(spans)) + " ms";
}

std::string Saved(std::int64_t beforeMs, std::int64_t nowMs) {
  std::ostringstream text;
  if (nowMs > beforeMs) {
    text << "This one took " << nowMs - beforeMs << " ms longer.\n";
  } else {
    const std::int64_t percent = beforeMs > 0 ? (beforeMs - nowMs) * 100 / beforeMs : 0;
    text << "Saved " << beforeMs - nowMs << " ms (" << percent << " %).\n";
  }
  return text.str();
}

Json::Value TimelineJson(const Milestones& milestones) {
  Json::Value timeline(Json::objectValue);
  timeline["milestones"] = Json::objectValue;
  for (const auto& [name, timeMs] : milestones) timeline["milestones"][name] = Json::Int64(timeMs);
  const std::vector<Span> spans = SpansOf(milestones);
  timeline["spans"] = Json::arrayValue;
  for (const Span& span : spans) {
    Json::Value entry;
    entry["name"] = span.name;
    entry["startMs"] = Json::Int64(span.startMs);
    entry["durationMs"] = Json::Int64(span.durationMs);
    timeline["spans"].append(std::move(entry));
  }
  timeline["totalMs"] = Json::Int64(TotalMs(spans));
  return timeline;
}

}  // namespace

std::string DrawReport(const Report& report, const DrawStyle& style) {
  if (!report.milestones) return {};
  const std::vector<Span> spans = SpansOf(*report.milestones);
  const std::string source = report.sessionFromCache ? "session from the cache" : "session from the cloud";
  const std::string title = Title("This connection, " + source, spans);
  std::ostringstream text;
  if (!report.before) {
    text << "\n" << DrawWaterfall(title, spans, TotalMs(spans), style);
    return text.str();
  }
  const std::vector<Span> before = SpansOf(*report.before);
  const std::int64_t scaleMs = std::max(TotalMs(before), TotalMs(spans));
  text << "\n" << DrawWaterfall(Title("The connection before", before), before, scaleMs, style);
  text << "\n" << DrawWaterfall(title, spans, scaleMs, style);
  text << "\n" << Saved(TotalMs(before), TotalMs(spans));
  return text.str();
}

std::string JsonReport(const Report& report) {
  Json::Value root;
  root["exitCode"] = static_cast<int>(report.outcome.exitCode);
  root["target"] = report.target;
  root["sessionFromCache"] = report.sessionFromCache;
  root["firstFrameMs"] = report.firstFrameMs ? Json::Value(Json::Int64(*report.firstFrameMs)) : Json::Value();
  if (report.outcome.exitCode != kExitSuccess) {
    root["failure"]["step"] = report.outcome.step;
    root["failure"]["message"] = report.outcome.message;
  }
  root["steps"] = Json::arrayValue;
  for (const StepLine& line : report.lines) {
    Json::Value entry;
    entry["ms"] = Json::Int64(line.atMs);
    entry["step"] = line.step;
    entry["text"] = line.text;
    root["steps"].append(std::move(entry));
  }
  if (report.milestones) root["timeline"] = TimelineJson(*report.milestones);
  if (report.before) root["before"] = TimelineJson(*report.before);
  return Json::writeString(Json::StreamWriterBuilder(), root) + "\n";
}

std::string PageReport(const Report& report, const std::vector<StoredConnection>& newestFirst, std::int64_t sinceMs,
                       std::int64_t nowMs) {
  PageContent page{report.target, nowMs, kEarlierOnPage, HistoryOf(newestFirst)};
  auto current = page.entries.begin();
  if (const StoredConnection* const stored = FindThis(newestFirst, sinceMs)) {
    current += stored - newestFirst.data();
    if (current->sessionFromCache) current->sessionFromCache = report.sessionFromCache;
  } else {
    current = page.entries.insert(current, HistoryEntry());
    current->beginMs = sinceMs;
  }
  current->isThis = true;
  if (report.outcome.exitCode != kExitSuccess) current->failure = report.outcome.message;
  // Another program may have connected meanwhile.
  const auto shown = static_cast<std::size_t>(current - page.entries.begin()) + 1 + kEarlierOnPage;
  if (page.entries.size() > shown) page.entries.resize(shown);
  return HtmlPage(page);
}

}  // namespace qv_connect
