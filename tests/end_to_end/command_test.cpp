// What is typed for the front end to send reaches the phone as it was typed, on the line that was chosen.
#include "tests/end_to_end/end_to_end.h"
#include "tools/qv_connect/commands.h"

namespace end_to_end {
namespace {

using qv_cloud::CloudStats;
using qv_cloud::kDefaultLine;
using qv_cloud::kLineA;
using qv_cloud::kLineB;
using qv_connect::ParseCommand;

// What is typed, and the slot and the arguments that arrive.
const struct {
  const char* line;
  const char* arrives;
} kCommands[] = {
    {"req3 1 18446744073709551615 3 -4", "3 [1,18446744073709551615,3,-4]"},
    {"req4 18446744073709551615 0", "2 [18446744073709551615,0]"},
    {"req5 .5 1.5 -2.5 3.5 4.5 5.5 6.5 7.5", "4 [0.5,1.5,-2.5,3.5,4.5,5.5,6.5,7.5]"},
    {"req6 -1 0.25 .5 0.75", "5 [-1,0.25,0.5,0.75]"},
    {R"(req7 one "and \"two\"")", R"(6 ["one","and \"two\""])"},
    {"  req8\t\"told back\" ", R"(7 ["told back"])"},
    {"req9 \"\"", R"(8 [""])"},
    {"req10 10 11", "10 [10,11]"},
    {"req11 1 2 3 -4", "11 [1,2,3,-4]"},
    {"mic 1 -48000 2", "12 [1,-48000,2]"},
    {"req13 13 14", "13 [13,14]"},
    {"camera 264 640 480 18446744073709551615 -5", "14 [264,640,480,18446744073709551615,-5]"},
    {"req15 25 99", "15 [25,99]"},
    {"req16 16 17", "16 [16,17]"},
    {"req17 -2147483648", "17 [-2147483648]"},
    {"dummy", "18 []"},
};

struct Commands : EndToEnd {
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
  Texts sent = {"17 [" + std::to_string(kReconnectNumber) + "]"};
  for (const auto& [line, arrives] : kCommands) {
    const qv_connect::ParsedCommand command = ParseCommand(line);
    ASSERT_TRUE(command.call) << command.error;
    EXPECT_EQ(command.call(*controller), 0) << line;
    sent.push_back(arrives);
  }
  // The text that the phone tells goes back to it, whenever it has come.
  constexpr std::uint32_t kEcho = 9;
  ASSERT_TRUE(CloudSees([&](const CloudStats& stats) { return stats.commands.size() == sent.size() + 1; }));
  Texts received, echoed;
  for (const auto& command : Stats().commands) {
    EXPECT_EQ(command.line, kDefaultLine);
    (command.slot == kEcho ? echoed : received).push_back(std::to_string(command.slot) + ' ' + command.args);
  }
  EXPECT_EQ(received, sent);
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
