#include "tools/qv_cloud/service.h"

#include <json/value.h>

#include <initializer_list>
#include <optional>

#include "tools/qv_cloud/json_text.h"

namespace qv_cloud {
namespace {

constexpr std::int32_t kTooManySessions = 60101002;

HttpReply Refusal(unsigned status, const std::string& reason) {
  Json::Value body(Json::objectValue);
  body["message"] = reason;
  HttpReply reply;
  reply.status = status;
  reply.body = WriteCompact(body);
  return reply;
}

Json::Value Decision(State& state, std::int32_t code, const char* message) {
  Json::Value decision(Json::objectValue);
  decision["requestTag"] = "r-" + std::to_string(++state.decisions);
  decision["code"] = code;
  decision["message"] = message;
  return decision;
}

void RequireTexts(const Json::Value& request, std::initializer_list<const char*> required,
                  std::initializer_list<const char*> optional) {
  for (const char* key : required) RequireText(request[key], key);
  for (const char* key : optional) ReadTextOr(request, key, "");
}

Json::Value Endpoints(const CloudOptions& options, const Line& line) {
  Json::Value endpoints(Json::objectValue);
  for (const char* domain : {"tcpDomain", "udpDomain", "webSocketDomain"}) endpoints[domain] = options.lineHost;
  endpoints["tcpPort"] = 0;
  endpoints["udpPort"] = 0;
  endpoints["webSocketPort"] = options.linePort != 0 ? options.linePort : line.port;
  return endpoints;
}

Json::Value GrantedData(const State& state, const Sessions::Granted& granted) {
  Json::Value data(Json::objectValue);
  data["sessionId"] = granted.id;
  data["instanceNo"] = "i-1";
  data["userId"] = "u-1";
  data["appPackage"] = "com.example.app";
  data["sessionSignExpireTime"] = Json::Int64{granted.expires.count()};
  data["sessionExpireTime"] = Json::Int64{granted.expires.count()};
  data["subStreamInfoList"] = Json::Value(Json::arrayValue);
  data["streamStrategyList"] = Json::Value(Json::arrayValue);
  for (const Line& line : state.lines) {
    Json::Value endpoints = Endpoints(state.options, line);
    if (line.ispCode == kDefaultLine) {
      data["streamInfo"] = endpoints;
      continue;
    }
    endpoints["ispCode"] = line.ispCode;
    endpoints["label"] = line.label;
    data["subStreamInfoList"].append(endpoints);
    data["streamStrategyList"].append(line.ispCode);
  }
  data["gCtrlNodeNo"] = "n-1";
  data["preemption"] = true;
  return data;
}

Json::Value PhoneConnect(State& state, const Json::Value& request, const Faults& faults, Time now) {
  RequireTexts(request, {"credential1", "credential2", "credential3", "targetId"}, {"text1", "text2", "version"});
  if (faults.refuseConnect != 0) return Decision(state, faults.refuseConnect, "phone connect refused");
  const std::optional<Sessions::Granted> granted = state.sessions.Grant(now);
  if (!granted) return Decision(state, kTooManySessions, "too many sessions");
  Json::Value decision = Decision(state, 0, "success");
  decision["data"] = GrantedData(state, *granted);
  return decision;
}

Json::Value RefreshSession(State& state, const Json::Value& request, const Faults& faults, Time now) {
  RequireTexts(request, {"credential1", "credential2", "credential3", "sessionId"}, {"text", "version"});
  if (faults.refuseRefresh != 0) return Decision(state, faults.refuseRefresh, "refresh refused");
  const std::optional<Sessions::Granted> granted = state.sessions.Refresh(request["sessionId"].asString(), now);
  if (!granted) return Decision(state, kSessionRefused, "session unknown or expired");
  Json::Value decision = Decision(state, 0, "success");
  decision["data"]["sessionId"] = granted->id;
  return decision;
}

// As an OpenTelemetry collector takes them (OTLP over HTTP in JSON).
Json::Value TakeTraces(State& state, const Json::Value& request, const Faults& faults, Time /*now*/) {
  if (!request["resourceSpans"].isArray()) throw Malformed("resourceSpans must be an array");
  state.observation.Change([&](CloudStats& stats) {
    if (stats.traces.size() < kMaxTracesKept) stats.traces.push_back(WriteCompact(request));
  });
  Json::Value answer(Json::objectValue);
  if (faults.refuseSpans != 0) answer["partialSuccess"]["rejectedSpans"] = std::to_string(faults.refuseSpans);
  return answer;
}

struct Endpoint {
  std::string_view path;
  std::uint64_t CloudStats::*counter;
  Json::Value (*decide)(State&, const Json::Value&, const Faults&, Time);
};
constexpr Endpoint kEndpoints[] = {
    {"/v1/phone-connect", &CloudStats::phoneConnects, &PhoneConnect},
    {"/v1/refresh-session", &CloudStats::refreshes, &RefreshSession},
    {"/v1/traces", &CloudStats::traceRequests, &TakeTraces},
};

HttpReply Decide(State& state, const Endpoint& endpoint, const HttpRequest& request, const Faults& faults, Time now) {
  if (request.method != "POST") return Refusal(405, "only POST is allowed");
  if (!request.contentType.starts_with("application/json")) {
    return Refusal(415, "Content-Type must be application/json");
  }
  state.observation.Change([&](CloudStats& stats) { ++(stats.*endpoint.counter); });

  HttpReply reply;
  if (faults.httpAnswer == HttpAnswer::never) {
    reply.sending = HttpReply::Sending::never;
    return reply;
  }
  if (faults.httpAnswer == HttpAnswer::closed) {
    reply.sending = HttpReply::Sending::close;
    return reply;
  }
  if (faults.httpStatus != 200) {
    reply = Refusal(faults.httpStatus, "switched to fail");
    reply.retryAfterSeconds = faults.httpRetryAfter;
    return reply;
  }
  if (faults.httpAnswer == HttpAnswer::garbage) {
    reply.body = R"({"code":0,"data":]garbage)";
    return reply;
  }
  try {
    const Json::Value decision = endpoint.decide(state, ParseObject(request.body), faults, now);
    reply.body = WriteCompact(decision);
    state.observation.Event(std::string(endpoint.path) + ": code " + std::to_string(decision["code"].asInt()));
  } catch (const Malformed& error) {
    state.observation.Change([](CloudStats& stats) { ++stats.malformed; });
    reply = Refusal(400, error.what());
  }
  if (faults.httpAnswer == HttpAnswer::half) reply.sending = HttpReply::Sending::half;
  return reply;
}

}  // namespace

HttpReply AnswerHttp(State& state, const HttpRequest& request, Time now) {
  for (const Endpoint& endpoint : kEndpoints) {
    if (request.target != endpoint.path) continue;
    const Faults faults = state.switches.Get();
    HttpReply reply = Decide(state, endpoint, request, faults, now);
    reply.after = state.options.delay + std::chrono::milliseconds(faults.httpLateMs);
    if (reply.sending != HttpReply::Sending::normal) {
      state.observation.Event(std::string(endpoint.path) + ": no answer");
    } else if (reply.status != 200) {
      state.observation.Event(std::string(endpoint.path) + ": HTTP status " + std::to_string(reply.status));
    }
    return reply;
  }
  return Refusal(404, "no such path");
}

}  // namespace qv_cloud
