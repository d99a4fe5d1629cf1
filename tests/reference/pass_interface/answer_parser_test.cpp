// Rules of the answers' JSON.
#include "reference/pass_interface/answer_parser.h"

#include "tests/support/line.h"
#include "tests/support/transcribed.h"

namespace {

using pass_interface::InstanceInfo;
using pass_interface::RefreshSessionRsp;
using pass_interface::StreamEndpoints;
using tests::Line;

std::string Shown(const StreamEndpoints& ends) {
  return Line("", ends.tcpDomain, ends.tcpPort, ends.udpDomain, ends.udpPort, ends.webSocketDomain, ends.webSocketPort);
}

std::string Repeated(const std::string& element, int count) {
  std::string list = element;
  for (int i = 1; i < count; ++i) list += "," + element;
  return list;
}

struct AnswerParser : tests::Transcribed<> {
  // What is read, or what is wrong with the answer.
  static std::string OutcomeOf(const std::string& text) {
    InstanceInfo answer;
    std::string problem;
    if (!pass_interface::ParsePhoneConnectAnswer(text, answer, problem)) {
      EXPECT_EQ(problem.find("s-1"), std::string::npos) << problem << " quotes the session";
      EXPECT_EQ(answer.code, -1) << problem;
      EXPECT_EQ(answer.sessionId, "") << problem;
      return problem;
    }
    std::string lines, strategies;
    for (const auto& line : answer.subStreamInfoList)
      lines += Line("line", line.ispCode, line.label, Shown(line.endpoints));
    for (const std::int32_t strategy : answer.streamStrategyList) strategies += " " + std::to_string(strategy);
    return Line("read", answer.requestTag, answer.code, answer.message, answer.sessionId, answer.instanceNo,
                answer.userId, answer.appPackage, answer.sessionSignExpireTime, answer.sessionExpireTime,
                Shown(answer.endpoints), lines, strategies, answer.gCtrlNodeNo, answer.preemption);
  }
  std::string With(const std::string& from, const std::string& to) const {
    std::string changed = granted;
    const std::size_t at = changed.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? "" : changed.replace(at, from.size(), to);
  }

  std::string granted;
};

// The first case is a granted answer with every key; in one with an arrow it is changed as the arrow says.
TEST_F(AnswerParser, AnAnswerFillsEveryFieldOrTheMessageNamesTheKeyAndWhatIsAllowed) {
  const std::string arrow = " => ";
  ForEachCase([&](const std::string& line) {
    if (granted.empty()) granted = line;
    const std::size_t at = line.find(arrow);
    return OutcomeOf(at == std::string::npos ? line : With(line.substr(0, at), line.substr(at + arrow.size())));
  });
  const std::string line = R"({"ispCode": 1, "label": "", "webSocketDomain": "l", "webSocketPort": 1})";
  for (const auto& [from, to] : {std::pair<std::string, std::string>{granted, ""},
                                 {R"({"a": []})", std::string(5000, '[')},
                                 {R"({"a": []})", std::string(100, '[') + std::string(100, ']')},
                                 {R"({"a": []})", '"' + std::string(1 << 20, ' ') + '"'},
                                 {"s-1", std::string(256, 's')},
                                 {"i-1", std::string(4097, 'x')},
                                 {"u-1", "\xFF"},
                                 {R"("subStreamInfoList": [)", R"("subStreamInfoList": [)" + Repeated(line, 64) + ","},
                                 {"[2, 1]", '[' + Repeated("1", 257) + ']'}}) {
    Indent(from.substr(0, 30) + " otherwise: " + OutcomeOf(With(from, to)));
  }
}

TEST_F(AnswerParser, ARefreshAnswerNeedsItsCodeAndWhenGrantedTheSession) {
  ForEachCase([](const std::string& line) {
    RefreshSessionRsp answer;
    std::string problem;
    const bool isRead = pass_interface::ParseRefreshSessionAnswer(line, answer, problem);
    return isRead ? Line("read", answer.requestTag, answer.code, answer.message, answer.sessionId) : problem;
  });
}

}  // namespace
