// Rules of the answers' JSON, one row each.
#include "reference/pass_interface/answer_parser.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>

namespace {

using pass_interface::InstanceInfo;
using pass_interface::ParsePhoneConnectAnswer;
using pass_interface::ParseRefreshSessionAnswer;
using pass_interface::RefreshSessionRsp;

const std::string kGranted =
    R"({"requestTag": "r-17", "code": 0, "message": "success", "unknown": {"a": []},
 "data": {"sessionId": "s-1", "instanceNo": "i-1", "userId": "u-1", "appPackage": "com.example.app",
  "sessionSignExpireTime": 1790000000000, "sessionExpireTime": 1790000000001,
  "streamInfo": {"tcpDomain": "tcp", "tcpPort": 1, "udpDomain": "udp", "udpPort": 65535,
                 "webSocketDomain": "ws", "webSocketPort": 40001},
  "subStreamInfoList": [{"ispCode": -7, "label": "", "webSocketDomain": "line", "webSocketPort": 40002}],
  "streamStrategyList": [2, 1], "gCtrlNodeNo": "n-1", "preemption": false}})";

std::string With(const std::string& from, const std::string& to) {
  std::string text = kGranted;
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

std::string Repeated(const std::string& element, int count) {
  std::string list = element;
  for (int i = 1; i < count; ++i) list += "," + element;
  return list;
}

TEST(AnswerParserTest, AGrantedAnswerFillsEveryField) {
  InstanceInfo answer;
  std::string problem;
  ASSERT_TRUE(ParsePhoneConnectAnswer(kGranted, answer, problem)) << problem;
  EXPECT_EQ(std::tie(answer.requestTag, answer.code, answer.message, answer.sessionId, answer.instanceNo, answer.userId,
                     answer.appPackage, answer.gCtrlNodeNo, answer.preemption),
            std::tuple("r-17", 0, "success", "s-1", "i-1", "u-1", "com.example.app", "n-1", false));
  EXPECT_EQ(std::tie(answer.sessionSignExpireTime, answer.sessionExpireTime), std::tuple(1790000000000, 1790000000001));
  EXPECT_EQ(std::tie(answer.endpoints.tcpDomain, answer.endpoints.tcpPort, answer.endpoints.udpDomain,
                     answer.endpoints.udpPort, answer.endpoints.webSocketDomain, answer.endpoints.webSocketPort),
            std::tuple("tcp", 1, "udp", 65535, "ws", 40001));
  ASSERT_EQ(answer.subStreamInfoList.size(), 1U);
  const auto& line = answer.subStreamInfoList[0];
  EXPECT_EQ(std::tie(line.ispCode, line.endpoints.webSocketDomain, line.endpoints.webSocketPort),
            std::tuple(-7, "line", 40002));
  EXPECT_EQ(answer.streamStrategyList, (std::vector<std::int32_t>{2, 1}));
}

TEST(AnswerParserTest, WhatIsNotRequiredKeepsItsDefaultAndARefusalNeedsNothingButItsCode) {
  InstanceInfo granted, refused;
  std::string problem;
  ASSERT_TRUE(ParsePhoneConnectAnswer(R"({"code": 0, "data": {"sessionId": "s", "sessionSignExpireTime": 0,
      "sessionExpireTime": 0, "streamInfo": {"webSocketDomain": "ws", "webSocketPort": 1}}})",
                                      granted, problem))
      << problem;
  EXPECT_EQ(std::tie(granted.requestTag, granted.endpoints.tcpPort, granted.preemption), std::tuple("", 0, true));
  EXPECT_TRUE(granted.subStreamInfoList.empty());
  const char* const refusal = R"({"code": -2147483648, "message": "no phone", "data": null})";
  ASSERT_TRUE(ParsePhoneConnectAnswer(refusal, refused, problem)) << problem;
  EXPECT_EQ(std::tie(refused.code, refused.message), std::tuple(INT32_MIN, "no phone"));
}

TEST(AnswerParserTest, AMalformedAnswerIsRefusedAndTheMessageNamesTheKeyAndWhatIsAllowed) {
  const std::string line = R"({"ispCode": 1, "label": "", "webSocketDomain": "l", "webSocketPort": 1})";
  const std::string lines = R"([{"ispCode": -7, "label": "", "webSocketDomain": "line", "webSocketPort": 40002}])";
  const struct {
    std::string text;
    const char* problem;
  } rows[] = {
      {"", "the answer: is not JSON at Line 1, Column 1"},
      {"[]", "the answer: must be an object"},
      {With(R"("s-1")", "s-1"), "the answer: is not JSON at Line 2"},
      {kGranted + "x", "the answer: is not JSON at Line 7"},
      {With(R"("code": 0)", R"("code": 0, "code": 1)"), "the answer: is not JSON at Line 1"},
      {With(R"({"a": []})", std::string(5000, '[')), "levels deep"},
      {With(R"({"a": []})", std::string(100, '[') + std::string(100, ']')), "levels deep"},
      {kGranted + std::string(1 << 20, ' '), "bytes are more than 1048576"},
      {With(R"("r-17")", "17"), "requestTag: must be a text"},
      {With(R"("code": 0,)", ""), "code: is missing"},
      {With(R"("code": 0)", R"("code": "0")"), "code: must be an integer between -2147483648 and 2147483647"},
      {With(R"("code": 0)", R"("code": 0.5)"), "code: must be an integer"},
      {With(R"("code": 0)", R"("code": 1e300)"), "code: must be an integer"},
      {With(R"("code": 0)", R"("code": 2147483648)"), "code: 2147483648 is not between -2147483648 and 2147483647"},
      {With(R"("data")", R"("date")"), "data: is missing"},
      {With(R"("s-1")", "null"), "data.sessionId: must be a text"},
      {With(R"("s-1")", R"("")"), "data.sessionId: must not be empty"},
      {With(R"("s-1")", R"("a\u0000b")"), "data.sessionId: must not hold a NUL character"},
      {With(R"("s-1")", '"' + std::string(256, 's') + '"'), "data.sessionId: 256 bytes are more than 255"},
      {With(R"("u-1")", "\"\xFF\""), "data.userId: must be UTF-8"},
      {With(R"("i-1")", '"' + std::string(4097, 'x') + '"'), "data.instanceNo: 4097 bytes are more than 4096"},
      {With("1790000000000", "-1"), "data.sessionSignExpireTime: -1 is not between 0 and 9223372036854775807"},
      {With(R"("sessionExpireTime")", R"("expire")"), "data.sessionExpireTime: is missing"},
      {With(R"("streamInfo")", R"("stream")"), "data.streamInfo: is missing"},
      {With(R"("tcpPort": 1)", R"("tcpPort": -1)"), "data.streamInfo.tcpPort: -1 is not between 0 and 65535"},
      {With("65535", "65536"), "data.streamInfo.udpPort: 65536 is not between 0 and 65535"},
      {With("40001", "0"), "data.streamInfo.webSocketPort: 0 is not between 1 and 65535"},
      {With(R"("ws")", R"("")"), "data.streamInfo.webSocketDomain: must not be empty"},
      {With(lines, "{}"), "data.subStreamInfoList: must be a list"},
      {With(lines, "[1]"), "data.subStreamInfoList[0]: must be an object"},
      {With(lines, '[' + Repeated(line, 65) + ']'), "data.subStreamInfoList: 65 elements are more than 64"},
      {With(lines, '[' + line + R"(, {"ispCode": 1}])"), "data.subStreamInfoList[1].label: is missing"},
      {With("40002", "65536"), "data.subStreamInfoList[0].webSocketPort: 65536 is not between 1 and 65535"},
      {With("[2, 1]", R"([2, "1"])"), "data.streamStrategyList[1]: must be an integer"},
      {With("[2, 1]", '[' + Repeated("1", 257) + ']'), "data.streamStrategyList: 257 elements are more than 256"},
      {With("false", "0"), "data.preemption: must be true or false"},
  };
  for (const auto& row : rows) {
    InstanceInfo answer;
    std::string problem;
    EXPECT_FALSE(ParsePhoneConnectAnswer(row.text, answer, problem)) << row.problem;
    EXPECT_NE(problem.find(row.problem), std::string::npos) << problem << "\nshould name: " << row.problem;
    EXPECT_EQ(problem.find("s-1"), std::string::npos) << problem << "\nquotes the session";
    EXPECT_EQ(answer.code, -1) << row.problem;
    EXPECT_EQ(answer.sessionId, "") << row.problem;
  }
}

TEST(AnswerParserTest, ARefreshAnswerNeedsItsCodeAndWhenGrantedTheSession) {
  RefreshSessionRsp answer;
  std::string problem;
  ASSERT_TRUE(
      ParseRefreshSessionAnswer(R"({"requestTag": "r", "code": 0, "data": {"sessionId": "s-2"}})", answer, problem));
  EXPECT_EQ(answer.requestTag, "r");
  EXPECT_EQ(answer.sessionId, "s-2");
  EXPECT_TRUE(ParseRefreshSessionAnswer(R"({"code": 5})", answer, problem));
  EXPECT_EQ(answer.code, 5);
  EXPECT_FALSE(ParseRefreshSessionAnswer(R"({"code": 0, "data": {}})", answer, problem));
  EXPECT_EQ(problem, "data.sessionId: is missing");
}

}  // namespace
