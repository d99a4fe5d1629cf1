#include "tools/qv_connect/history.h"

#include <algorithm>

namespace qv_connect {
namespace {

bool Is(const StoredMessage& message, int type, int status) {
  return message.type == type && message.status == status;
}

bool IsAttempt(const StoredMessage& message) {
  return Is(message, 0, 3);
}

bool IsEnd(const StoredMessage& message) {
  return Is(message, 0, 6) || Is(message, 0, 5) || Is(message, 0, 0);
}

std::int64_t SinceBegin(const StoredConnection& connection, const StoredMessage& message) {
  return std::max<std::int64_t>(0, message.atMs - connection.beginMs);
}

// The spans up to the first one that is missing.
std::vector<Span> LeadingSpans(const Milestones& milestones) {
  static const std::vector<std::string> names = SpanNames();
  std::vector<Span> spans = SpansOf(milestones);
  std::size_t count = 0;
  while (count < spans.size() && spans[count].name == names[count]) ++count;
  spans.resize(count);
  return spans;
}

// Null when the first frame has not come. An object that connects again keeps the milestones of its last connection
// until they come again, so that an older one is none.
const StoredMessage* AtFirstFrame(const StoredConnection& connection) {
  for (const StoredMessage& message : connection.messages) {
    const auto frame = message.milestones.find("recvFirstFrame");
    if (frame != message.milestones.end() && frame->second >= connection.beginMs) return &message;
  }
  return nullptr;
}

const StoredMessage& AtFurthest(const StoredConnection& connection) {
  return *std::max_element(connection.messages.begin(), connection.messages.end(),
                           [](const StoredMessage& left, const StoredMessage& right) {
                             return LeadingSpans(left.milestones).size() < LeadingSpans(right.milestones).size();
                           });
}

// The session is in hand once, but each attempt resolves the name anew: without this, resolving it would seem to have
// taken as long as all attempts before.
void SplitEarlierAttempts(const StoredConnection& connection, const StoredMessage& snapshot, std::vector<Span>& spans) {
  std::int64_t attemptMs = 0;
  std::size_t attempts = 0;
  for (const StoredMessage& message : connection.messages) {
    if (&message > &snapshot) break;
    if (!IsAttempt(message)) continue;
    attemptMs = SinceBegin(connection, message);
    ++attempts;
  }
  if (attempts < 2 || LeadingSpans(snapshot.milestones).size() < 2) return;
  Span& resolve = spans[1];
  const std::int64_t endMs = resolve.startMs + resolve.durationMs;
  if (attemptMs < resolve.startMs || attemptMs > endMs) return;
  const Span earlier{"earlier attempts", resolve.startMs, attemptMs - resolve.startMs};
  resolve = {resolve.name, attemptMs, endMs - attemptMs};
  spans.insert(spans.begin() + 1, earlier);
}

// The step in which the connection ended, the attempts after that, and the steps that it did not reach.
void AddUnfinished(const StoredConnection& connection, const StoredMessage& snapshot, HistoryEntry& entry) {
  const StoredMessage& last = connection.messages.back();
  const StoredMessage& end = *std::find_if(&snapshot, &last, IsEnd);
  const auto add = [&](const std::string& name, const StoredMessage& until, StepState state) {
    const std::int64_t endMs = std::max(entry.totalMs, SinceBegin(connection, until));
    entry.steps.push_back({{name, entry.totalMs, endMs - entry.totalMs}, state, {}});
    entry.totalMs = endMs;
  };
  std::vector<std::string> missing = SpanNames();
  for (const HistoryStep& step : entry.steps) std::erase(missing, step.span.name);
  for (const std::string& name : missing) {
    if (&name != &missing.front()) {
      entry.steps.push_back({{name, 0, 0}, StepState::kNotReached, {}});
      continue;
    }
    add(name, end, StepState::kEndedHere);
    if (std::any_of(&end, &last, IsAttempt)) add("further attempts", last, StepState::kDone);
  }
}

void AddSteps(const StoredConnection& connection, HistoryEntry& entry) {
  const StoredMessage* const firstFrame = AtFirstFrame(connection);
  const StoredMessage& snapshot = firstFrame != nullptr ? *firstFrame : AtFurthest(connection);
  entry.reachedFirstFrame = firstFrame != nullptr;
  std::vector<Span> spans = entry.reachedFirstFrame ? SpansOf(snapshot.milestones) : LeadingSpans(snapshot.milestones);
  SplitEarlierAttempts(connection, snapshot, spans);
  entry.totalMs = TotalMs(spans);
  for (Span& span : spans) entry.steps.push_back({std::move(span), StepState::kDone, {}});
  if (!entry.reachedFirstFrame) AddUnfinished(connection, snapshot, entry);

  const auto slowest = std::max_element(
      entry.steps.begin(), entry.steps.end(),
      [](const HistoryStep& left, const HistoryStep& right) { return left.span.durationMs < right.span.durationMs; });
  if (slowest == entry.steps.end() || slowest->span.durationMs == 0) return;
  entry.slowest = static_cast<std::size_t>(slowest - entry.steps.begin());
}

void AddErrors(const StoredConnection& connection, HistoryEntry& entry) {
  for (const StoredMessage& message : connection.messages) {
    if (!IsEnd(message)) continue;
    const std::int64_t atMs = SinceBegin(connection, message);
    auto error = std::find_if(entry.errors.begin(), entry.errors.end(),
                              [&](const HistoryError& each) { return each.code == message.errorCode; });
    if (error == entry.errors.end()) {
      error = entry.errors.insert(error, {message.errorCode, message.requestTag, 0, atMs, atMs});
    }
    ++error->count;
    error->latestMs = atMs;
  }
}

void AddEvents(const StoredConnection& connection, HistoryEntry& entry) {
  bool attempted = false;
  std::string session;
  for (const StoredMessage& message : connection.messages) {
    const std::int64_t atMs = SinceBegin(connection, message);
    // Every other new attempt comes after a loss.
    if (IsAttempt(message) && attempted) entry.events.push_back({atMs, "the carrier line was changed"});
    if (IsAttempt(message) || Is(message, 0, 6)) attempted = IsAttempt(message);
    // The first message of an attempt may come before the session is noted, and with the one of a connection before.
    const auto inHand = message.milestones.find("endGetInstanceInfo");
    const bool hasSession = inHand != message.milestones.end() && inHand->second >= connection.beginMs;
    if (IsAttempt(message) || !hasSession || message.session.empty()) continue;
    if (session.empty()) entry.sessionFromCache = message.sessionSinceMs < connection.beginMs;
    if (!session.empty() && session != message.session) entry.events.push_back({atMs, "the session was renewed"});
    session = message.session;
  }
}

void CompareWith(const HistoryEntry& before, HistoryEntry& entry) {
  entry.changeMs = entry.totalMs - before.totalMs;
  for (HistoryStep& step : entry.steps) {
    const auto same = std::find_if(before.steps.begin(), before.steps.end(),
                                   [&](const HistoryStep& each) { return each.span.name == step.span.name; });
    if (same != before.steps.end()) step.changeMs = step.span.durationMs - same->span.durationMs;
  }
}

}  // namespace

const StoredConnection* FindThis(const std::vector<StoredConnection>& newestFirst, std::int64_t sinceMs) {
  const auto found = std::find_if(newestFirst.rbegin(), newestFirst.rend(),
                                  [&](const StoredConnection& connection) { return connection.beginMs >= sinceMs; });
  return found != newestFirst.rend() ? &*found : nullptr;
}

const StoredConnection* FindBefore(const std::vector<StoredConnection>& newestFirst, std::int64_t sinceMs) {
  const auto found = std::find_if(newestFirst.begin(), newestFirst.end(), [&](const StoredConnection& connection) {
    return connection.beginMs < sinceMs && AtFirstFrame(connection) != nullptr;
  });
  return found != newestFirst.end() ? &*found : nullptr;
}

const Milestones& MilestonesOf(const StoredConnection& connection) {
  const StoredMessage* const firstFrame = AtFirstFrame(connection);
  return (firstFrame != nullptr ? *firstFrame : AtFurthest(connection)).milestones;
}

std::vector<HistoryEntry> HistoryOf(const std::vector<StoredConnection>& newestFirst) {
  std::vector<HistoryEntry> entries;
  for (const StoredConnection& connection : newestFirst) {
    HistoryEntry& entry = entries.emplace_back();
    entry.beginMs = connection.beginMs;
    entry.process = connection.process;
    AddSteps(connection, entry);
    AddErrors(connection, entry);
    AddEvents(connection, entry);
  }
  const HistoryEntry* before = nullptr;
  for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
    if (!entry->reachedFirstFrame) continue;
    if (before != nullptr) CompareWith(*before, *entry);
    before = &*entry;
  }
  return entries;
}

}  // namespace qv_connect
