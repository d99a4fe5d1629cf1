// What is typed for the front end to send reaches the phone as it was typed, on the line that was chosen.
#include "tests/end_to_end/end_to_end.h"
#include "tests/support/transcribed.h"
#include "tools/qv_connect/commands.h"

namespace end_to_end {
namespace {

using qv_cloud::CloudStats;
using qv_cloud::kDefaultLine;
using qv_cloud::kLineA;
using qv_cloud::kLineB;
using qv_connect::ParseCommand;

struct Commands : tests::Transcribed<EndToEnd> {
  std::string SwitchTo(std::uint32_t line) {
    const std::size_t frames = frontEnd->notices.Count(kFirstFrame);
    const std::int32_t result = ParseCommand("line " + std::to_string(line)).call(*controller);
    if (result != 0) return "result " + std::to_string(result);
    return frontEnd->notices.WaitFor(kFirstFrame, frames + 1) && CloudHasConnections(1) ? Lines() : "no first frame";
  }
  // The connections of the default line and lines A and B so far.
  std::string Lines() const {
    auto lines = Stats().lines;
    return std::to_string(lines[kDefaultLine].ever) + ' ' + std::to_string(lines[kLineA].ever) + ' ' +
           std::to_string(lines[kLineB].ever);
  }
};

TEST_F(Commands, ArriveInOrderAndUnchangedAndAreAnswered) {
  StartCloud();
  ASSERT_TRUE(ConnectToFirstFrame());
  // Init's own, and the text that the phone tells, which goes back to it whenever it has come.
  std::size_t due = 2;
  ForEachCase([&](const std::string& line) {
    ++due;
    return std::to_string(ParseCommand(line).call(*controller));
  });
  constexpr std::uint32_t kEcho = 9;
  ASSERT_TRUE(CloudSees([due](const CloudStats& stats) { return stats.commands.size() == due; }));
  Texts echoed;
  for (const auto& command : Stats().commands) {
    EXPECT_EQ(command.line, kDefaultLine);
    const std::string arrived = std::to_string(command.slot) + ' ' + command.args;
    command.slot == kEcho ? echoed.push_back(arrived) : Indent(arrived);
  }
  EXPECT_EQ(echoed, Texts{R"(9 ["told back",0])"});
  EXPECT_TRUE(frontEnd->notices.WaitFor("OnNotice7"));
  EXPECT_EQ(frontEnd->notices.Count("OnNotice8(told back)"), 1U);
  EXPECT_EQ(frontEnd->notices.Count("OnVideoParamRsp(0, 99, 25, 2048, 720, 1280)"), 1U);
  EXPECT_EQ(Stats().malformed, 0U);
}

TEST_F(Commands, AGrantedFrameRateIsAskedForByTheNextConnections) {
  StartCloud();
  ASSERT_TRUE(ConnectToFirstFrame());
  EXPECT_EQ(cloudEvents.Count("line 65536: play 264 at 30 frames a second"), 1U);
  ASSERT_EQ(controller->SendInReq15(25, 0), 0);
  ASSERT_TRUE(frontEnd->notices.WaitFor("OnVideoParamRsp(0, 0, 25,"));
  cloud->SetFaults({.dropAfterFrames = 1});
  EXPECT_TRUE(cloudEvents.WaitFor("line 65536: play 264 at 25 frames a second")) << "the lost connection's successor";
  ASSERT_TRUE(frontEnd->notices.WaitFor(kFirstFrame, 2));
  ASSERT_EQ(controller->ChangeIsp(kLineA), 0);
  EXPECT_TRUE(cloudEvents.WaitFor("line 1: play 264 at 25 frames a second")) << "the other line's connection";
}

TEST_F(Commands, ChangeIspMovesTheConnectionToTheLine) {
  StartCloud();
  ASSERT_TRUE(ConnectToFirstFrame());
  ASSERT_TRUE(frontEnd->notices.WaitFor("OnIspList"));
  EXPECT_EQ(Lines(), "1 0 0");
  EXPECT_EQ(SwitchTo(kLineA), "1 1 0");
  EXPECT_EQ(SwitchTo(kLineB), "1 1 1");
  EXPECT_EQ(controller->ChangeIsp(kLineB), 0) << "the current one";
  EXPECT_EQ(SwitchTo(99), "result -1");
  EXPECT_EQ(SwitchTo(kDefaultLine), "2 1 1");
  EXPECT_EQ(Lines(), "2 1 1");
  EXPECT_EQ(controller->SendInReq4(1, 2), 0);
  EXPECT_TRUE(CloudSees([](const CloudStats& stats) { return stats.commands.size() == 5; }));
  EXPECT_EQ(Stats().commands.back().line, kDefaultLine);
  EXPECT_EQ(Stats().phoneConnects, 1U);
  EXPECT_EQ(frontEnd->States(), "CSCSCSCS") << "a connection that is given up tells nothing more";
}

}  // namespace
}  // namespace end_to_end
