#include <string>

#include "reference/pass_interface/answer_parser.h"
#include "session/instance_info_codec.h"
#include "tests/fuzz/checks.h"

namespace fuzz {
namespace {

using namespace pass_interface;

void RequireUsable(const StreamEndpoints& endpoints) {
  for (const int port : {endpoints.tcpPort, endpoints.udpPort, endpoints.webSocketPort}) {
    Require(port >= 0 && port <= 65535, "a port is in range");
  }
  Require(!endpoints.webSocketDomain.empty() && endpoints.webSocketPort > 0, "a line can be connected to");
}

void CheckGranted(const InstanceInfo& answer) {
  Require(!answer.sessionId.empty() && answer.sessionId.size() < 256, "a session fits the signalling's records");
  Require(answer.sessionSignExpireTime >= 0 && answer.sessionExpireTime >= 0, "a time is not negative");
  Require(answer.subStreamInfoList.size() <= kMaximumLines && answer.streamStrategyList.size() <= kMaximumStrategies,
          "the lists are bounded");
  RequireUsable(answer.endpoints);
  for (const SubStreamInfo& line : answer.subStreamInfoList) RequireUsable(line.endpoints);

  std::string json;
  qv_data_interface::InstanceInfoToJson(answer, json);
  InstanceInfo cached;
  Require(qv_data_interface::ParseInstanceInfo(json.c_str(), cached) == 0, "what was granted can be cached");
  Require(cached.sessionId == answer.sessionId && cached.endpoints.webSocketDomain == answer.endpoints.webSocketDomain,
          "the cache gives back what was granted");
}

template <class Answer>
void RequireNothingRead(const Answer& answer, const std::string& problem) {
  Require(!problem.empty() && answer.code == -1 && answer.sessionId.empty(), "a refused answer leaves the defaults");
}

}  // namespace

bool CheckHttpAnswer(std::string_view input) {
  InstanceInfo connect;
  RefreshSessionRsp refresh;
  std::string problem;
  const bool isConnect = ParsePhoneConnectAnswer(input, connect, problem);
  if (!isConnect) RequireNothingRead(connect, problem);
  if (isConnect && connect.code == 0) CheckGranted(connect);
  const bool isRefresh = ParseRefreshSessionAnswer(input, refresh, problem);
  if (!isRefresh) RequireNothingRead(refresh, problem);
  if (isRefresh && refresh.code == 0) Require(!refresh.sessionId.empty(), "a renewed session has an id");
  return isConnect || isRefresh;
}

}  // namespace fuzz
