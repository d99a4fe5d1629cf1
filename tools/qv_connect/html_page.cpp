#include "tools/qv_connect/html_page.h"

#include <algorithm>
#include <sstream>

#include "tools/qv_connect/html_style.h"
#include "tools/qv_connect/html_text.h"
#include "tools/qv_connect/result_help.h"

namespace qv_connect {
namespace {

// Errors or events of one connection, whose number the cloud decides.
constexpr std::size_t kMostOfAKind = 20;

// What the totals share, so that they compare by eye; one that never ended its wait would leave the others no width.
std::int64_t SharedScale(const std::vector<HistoryEntry>& entries) {
  std::int64_t scaleMs = 0;
  for (const HistoryEntry& entry : entries) {
    if (entry.reachedFirstFrame) scaleMs = std::max(scaleMs, entry.totalMs);
  }
  return scaleMs;
}

std::string Id(std::size_t index) {
  return "connection-" + std::to_string(index + 1);
}

std::string Session(const HistoryEntry& entry) {
  if (!entry.sessionFromCache) return "no session";
  return *entry.sessionFromCache ? "session cache hit" : "session cache miss";
}

std::string EndedAt(const HistoryEntry& entry) {
  const auto step = std::find_if(entry.steps.begin(), entry.steps.end(),
                                 [](const auto& each) { return each.state == StepState::kEndedHere; });
  return step != entry.steps.end() ? "failed at " + step->span.name : "failed";
}

std::string TimeTag(std::int64_t ms) {
  std::string machine = Utc(ms) + "Z";
  machine[machine.find(' ')] = 'T';
  return "<time datetime=\"" + machine + "\">" + Utc(ms) + "&nbsp;UTC</time>";
}

std::string ChangeTag(const std::optional<std::int64_t>& changeMs) {
  if (!changeMs) return "<span class=\"change\"></span>";
  const char* const kind = *changeMs == 0 ? "soft" : (*changeMs > 0 ? "slow" : "good");
  return std::string("<span class=\"change ") + kind + "\">" + Change(*changeMs) + "</span>";
}

// The bar is for the eye; the numbers beside it say the same.
std::string BarTag(std::int64_t startMs, std::int64_t durationMs, std::int64_t scaleMs) {
  return "<span class=\"track\" aria-hidden=\"true\"><span class=\"bar\" style=\"left:min(" +
         Percent(startMs, scaleMs) + ",100% - 2px);width:" + Percent(durationMs, scaleMs) + "\"></span></span>";
}

std::string Verdict(const HistoryEntry& entry) {
  std::ostringstream text;
  if (entry.reachedFirstFrame) {
    text << "First frame after <strong>" << Ms(entry.totalMs) << "</strong>";
    if (entry.changeMs)
      text << ", " << Change(*entry.changeMs) << (*entry.changeMs == 0 ? " as" : " than") << " the one before";
  } else {
    text << "<strong class=\"bad\">&#10007; " << EndedAt(entry) << "</strong>";
    if (!entry.steps.empty()) text << ", ended after " << Ms(entry.totalMs);
  }
  if (entry.slowest) {
    const Span& span = entry.steps[*entry.slowest].span;
    text << "; slowest: <strong class=\"slow\">" << span.name << "</strong>, " << Ms(span.durationMs);
  }
  return text.str() + ".";
}

void WriteGlance(const PageContent& content, std::ostream& out) {
  const std::int64_t scaleMs = SharedScale(content.entries);
  out << "<section aria-labelledby=\"glance\">\n<h2 id=\"glance\">Time to the first frame</h2>\n"
      << "<ol role=\"list\" class=\"glance\">\n";
  for (std::size_t i = 0; i < content.entries.size(); ++i) {
    const HistoryEntry& entry = content.entries[i];
    out << "<li><span class=\"name\"><a href=\"#" << Id(i) << "\">"
        << (entry.isThis ? "This connection" : Utc(entry.beginMs)) << "</a><br><span class=\"soft\">" << Session(entry);
    if (entry.slowest) out << "<br>slowest: " << entry.steps[*entry.slowest].span.name;
    out << "</span></span>";
    if (entry.reachedFirstFrame) {
      out << BarTag(0, entry.totalMs, scaleMs) << "<span class=\"ms\">" << Ms(entry.totalMs) << "</span>"
          << ChangeTag(entry.changeMs);
    } else {
      out << "<strong class=\"none bad\">&#10007; " << EndedAt(entry) << "</strong>";
    }
    out << "</li>\n";
  }
  out << "</ol>\n</section>\n";
}

void WriteStep(const HistoryStep& step, bool isSlowest, std::int64_t scaleMs, std::ostream& out) {
  const bool unreached = step.state == StepState::kNotReached;
  const bool ended = step.state == StepState::kEndedHere;
  out << "<li class=\"step" << (isSlowest ? " slowest" : "") << (ended ? " ended" : "")
      << (unreached ? " unreached" : "") << "\"><span class=\"name\">" << step.span.name;
  if (isSlowest) out << " <span class=\"mark slow\">slowest</span>";
  if (ended) out << " <span class=\"mark bad\">ended here</span>";
  out << "</span>";
  if (unreached) {
    out << "<span class=\"none soft\">not reached</span>";
  } else {
    out << BarTag(step.span.startMs, step.span.durationMs, scaleMs) << "<span class=\"ms\">" << Ms(step.span.durationMs)
        << "</span>" << ChangeTag(step.changeMs);
  }
  out << "</li>\n";
}

void WriteError(const HistoryError& error, std::ostream& out) {
  const ResultHelp& help = HelpFor(error.code);
  out << "<dt class=\"bad\">" << Escaped(error.code) << ' ' << help.text << "</dt>\n<dd>" << help.meaning
      << "<br>What to do: " << help.advice << "<br><span class=\"soft\">";
  if (error.count == 1) {
    out << "After " << Ms(error.firstMs);
  } else {
    out << error.count << " times, after " << Ms(error.firstMs) << " to " << Ms(error.latestMs);
  }
  if (!error.requestTag.empty()) out << "; the service knows the request as " << Escaped(error.requestTag);
  out << ".</span></dd>\n";
}

void WriteErrors(const HistoryEntry& entry, std::ostream& out) {
  if (entry.errors.empty() && entry.failure.empty()) return;
  out << "<h3>What went wrong</h3>\n";
  if (!entry.failure.empty()) out << "<p class=\"failure\">" << Escaped(entry.failure) << "</p>\n";
  if (entry.errors.empty()) return;
  const std::size_t shown = std::min(entry.errors.size(), kMostOfAKind);
  out << "<dl>\n";
  for (std::size_t i = 0; i < shown; ++i) WriteError(entry.errors[i], out);
  out << "</dl>\n";
  if (shown < entry.errors.size()) out << "<p>And " << entry.errors.size() - shown << " other codes.</p>\n";
}

void WriteEvents(const HistoryEntry& entry, std::ostream& out) {
  if (entry.events.empty()) return;
  const std::size_t shown = std::min(entry.events.size(), kMostOfAKind);
  out << "<h3>Besides</h3>\n<ul>\n";
  for (std::size_t i = 0; i < shown; ++i) {
    out << "<li>After " << Ms(entry.events[i].atMs) << ' ' << entry.events[i].text << ".</li>\n";
  }
  if (shown < entry.events.size()) out << "<li>And " << entry.events.size() - shown << " more.</li>\n";
  out << "</ul>\n";
}

void WriteConnection(const HistoryEntry& entry, std::size_t index, std::ostream& out) {
  out << "<section class=\"connection" << (entry.isThis ? " this" : "") << "\" id=\"" << Id(index)
      << "\" aria-labelledby=\"" << Id(index) << "-title\">\n<h2 id=\"" << Id(index) << "-title\">"
      << (entry.isThis ? "This connection" : "Connection") << ", " << TimeTag(entry.beginMs) << "</h2>\n"
      << "<p class=\"verdict\">" << Verdict(entry) << "</p>\n<p class=\"soft\">" << Session(entry);
  if (!entry.process.empty()) out << "; made by " << Escaped(entry.process);
  out << "</p>\n";
  if (entry.steps.empty()) {
    out << "<p>The collector's store holds nothing of it.</p>\n";
  } else {
    out << "<ol role=\"list\" class=\"steps\" aria-label=\"Steps\">\n";
    for (std::size_t i = 0; i < entry.steps.size(); ++i)
      WriteStep(entry.steps[i], entry.slowest == i, entry.totalMs, out);
    out << "</ol>\n";
  }
  WriteErrors(entry, out);
  WriteEvents(entry, out);
  out << "</section>\n";
}

}  // namespace

std::string HtmlPage(const PageContent& content) {
  const std::string target = Escaped(content.target);
  std::ostringstream out;
  // The policy forbids whatever this file does not hold itself; the empty icon keeps a browser from asking for one.
  out << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      << "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; "
      << "img-src data:\">\n"
      << "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      << "<link rel=\"icon\" href=\"data:,\">\n"
      << "<title>Connections to " << target << "</title>\n<style>" << kPageStyle << "</style>\n</head>\n<body>\n"
      << "<header>\n<h1>Connections to " << target << "</h1>\n<p class=\"soft\">Newest first: this one and, of those "
      << "before, the last " << content.earlierAtMost << " at most. &ldquo;Slower&rdquo; and &ldquo;faster&rdquo; are "
      << "against the last one before that reached its first frame. Each waterfall fills its "
      << "width, however long the connection took. Written by qv_connect on " << TimeTag(content.writtenMs)
      << ".</p>\n</header>\n<main>\n";
  WriteGlance(content, out);
  for (std::size_t i = 0; i < content.entries.size(); ++i) WriteConnection(content.entries[i], i, out);
  out << "</main>\n</body>\n</html>\n";
  return out.str();
}

}  // namespace qv_connect
