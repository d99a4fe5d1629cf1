#include "reference/collect_interface/trace_json.h"

#include <json/value.h>
#include <openssl/rand.h>

#include <algorithm>
#include <array>
#include <span>
#include <stdexcept>
#include <string_view>

#include "reference/collect_interface/hex_text.h"
#include "reference/common/compact_json.h"
#include "reference/common/openssl_at_exit.h"

namespace collect_interface {
namespace {

constexpr int kKindInternal = 1;
constexpr int kKindClient = 3;
constexpr int kStatusError = 2;
constexpr std::size_t kMaxAttributeBytes = 256;

struct Step {
  const char* name = "";
  std::int64_t fromMs = 0;
  std::int64_t toMs = 0;
  // Still under way at the end.
  bool isOpen = false;
};

std::int64_t TimeOf(const ConnectionTrace& trace, const char* name) {
  const auto found = trace.milestones.find(name);
  return found != trace.milestones.end() ? found->second : 0;
}

// One after the other: what an earlier attempt, or a clock that was set, has left out of order ends the list.
std::vector<Step> StepsOf(const ConnectionTrace& trace) {
  std::vector<Step> steps;
  std::int64_t reached = TimeOf(trace, kBeginOfConnection);
  for (const auto& step : kSteps) {
    const std::int64_t from = TimeOf(trace, step.from);
    const std::int64_t to = TimeOf(trace, step.to);
    if (from < reached) break;
    if (to < from) {
      if (trace.outcome != ConnectionTrace::Outcome::firstFrame) {
        steps.push_back({step.name, from, std::max(from, trace.endMs), true});
      }
      break;
    }
    steps.push_back({step.name, from, to, false});
    reached = to;
  }
  return steps;
}

std::string RandomId(std::size_t size) {
  std::array<unsigned char, 16> bytes{};
  if (RAND_bytes(bytes.data(), static_cast<int>(size)) != 1) throw std::runtime_error("no random number is to be had");
  return HexText(std::span(bytes).first(size));
}

std::string Nanoseconds(std::int64_t ms) {
  return std::to_string(ms) + "000000";
}

void AddText(Json::Value& attributes, const char* key, std::string_view text) {
  if (text.empty()) return;
  std::size_t size = std::min(text.size(), kMaxAttributeBytes);
  // Not in the middle of a character.
  while (size > 0 && size < text.size() && (static_cast<unsigned char>(text[size]) & 0xc0) == 0x80) --size;
  Json::Value attribute;
  attribute["key"] = key;
  attribute["value"]["stringValue"] = std::string(text.substr(0, size));
  attributes.append(std::move(attribute));
}

// The service's text: shown only where it is a host and no URL with more in it.
void AddHost(Json::Value& attributes, std::string_view host) {
  const auto isHostCharacter = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view(".-_:[]").find(c) != std::string_view::npos;
  };
  if (std::all_of(host.begin(), host.end(), isHostCharacter)) AddText(attributes, "server.address", host);
}

void AddPort(Json::Value& attributes, std::string_view port) {
  const bool isNumber = std::all_of(port.begin(), port.end(), [](char c) { return c >= '0' && c <= '9'; });
  if (port.empty() || port.size() > 5 || !isNumber) return;
  Json::Value attribute;
  attribute["key"] = "server.port";
  attribute["value"]["intValue"] = std::string(port);
  attributes.append(std::move(attribute));
}

Json::Value Span(const std::string& traceId, const char* name, int kind, std::int64_t fromMs, std::int64_t toMs) {
  Json::Value span;
  span["traceId"] = traceId;
  span["spanId"] = RandomId(8);
  span["name"] = name;
  span["kind"] = kind;
  span["startTimeUnixNano"] = Nanoseconds(fromMs);
  span["endTimeUnixNano"] = Nanoseconds(toMs);
  return span;
}

void SetError(Json::Value& span, const std::string& text) {
  span["status"]["code"] = kStatusError;
  span["status"]["message"] = text;
}

Json::Value AttributesOf(const ConnectionTrace& trace) {
  constexpr const char* kOutcomes[] = {"first frame", "failed", "released"};
  Json::Value attributes(Json::arrayValue);
  AddText(attributes, "qv.target", trace.target);
  AddText(attributes, "qv.outcome", kOutcomes[static_cast<int>(trace.outcome)]);
  AddText(attributes, "qv.session_digest", trace.session);
  AddText(attributes, "qv.sdk.type", trace.sdkType);
  AddText(attributes, "qv.sdk.version", trace.sdkVersion);
  AddHost(attributes, trace.lineHost);
  AddPort(attributes, trace.linePort);
  AddText(attributes, "error.type", trace.errorCode);
  return attributes;
}

Json::Value SpansOf(const ConnectionTrace& trace) {
  const std::string traceId = RandomId(16);
  const std::vector<Step> steps = StepsOf(trace);
  const bool hasFirstFrame = trace.outcome == ConnectionTrace::Outcome::firstFrame;
  const std::int64_t begin = TimeOf(trace, kBeginOfConnection);
  const std::int64_t frame = TimeOf(trace, "recvFirstFrame");
  std::int64_t end = std::max(begin, hasFirstFrame && frame >= begin ? frame : trace.endMs);
  if (!steps.empty()) end = std::max(end, steps.back().toMs);

  Json::Value connection = Span(traceId, "connection", kKindClient, begin, end);
  connection["attributes"] = AttributesOf(trace);
  const bool isStopped = !steps.empty() && steps.back().isOpen;
  const std::string where = isStopped ? std::string(steps.back().name) + ": " : std::string();
  const std::string error = where + "error " + trace.errorCode;
  if (trace.outcome == ConnectionTrace::Outcome::failed) SetError(connection, error);

  Json::Value spans(Json::arrayValue);
  spans.append(connection);
  for (const Step& step : steps) {
    Json::Value child = Span(traceId, step.name, kKindInternal, step.fromMs, step.toMs);
    child["parentSpanId"] = connection["spanId"];
    if (step.isOpen && trace.outcome == ConnectionTrace::Outcome::failed) SetError(child, error);
    spans.append(std::move(child));
  }
  return spans;
}

Json::Value ResourceSpansOf(const ConnectionTrace& trace) {
  Json::Value resource(Json::arrayValue);
  AddText(resource, "service.name", "qv_data_interface");
  AddText(resource, "service.version", trace.interfaceVersion);
  AddText(resource, "process.executable.name", trace.processName);
  Json::Value scoped;
  scoped["scope"]["name"] = "qv_data_interface.reference_collect_interface";
  scoped["spans"] = SpansOf(trace);
  Json::Value spans;
  spans["resource"]["attributes"] = std::move(resource);
  spans["scopeSpans"].append(std::move(scoped));
  return spans;
}

}  // namespace

std::string TraceJson(const std::vector<ConnectionTrace>& connections) {
  reference::KeepOpenSslAtExit();
  Json::Value request;
  for (const ConnectionTrace& trace : connections) request["resourceSpans"].append(ResourceSpansOf(trace));
  return reference::CompactJson(request);
}

}  // namespace collect_interface
