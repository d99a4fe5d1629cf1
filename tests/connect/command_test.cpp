// A wrong line says why. That every name reaches its own operation is seen where a cloud is at the other end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/qv_connect/commands.h"

namespace qv_connect {
namespace {

using Kind = ParsedCommand::Kind;

TEST(Commands, AWrongLineSaysWhatWasWrongAndWhatIsAllowed) {
  const struct {
    const char* line;
    const char* error;
  } cases[] = {
      {"req12 1", "there is no command \"req12\"; \"help\" lists those that there are"},
      {"req4 1", "req4 takes 2 arguments, not 1: req4 a b"},
      {"release now", "release takes no arguments"},
      {"req17 2147483648", "req17: a must be a whole number from -2147483648 to 2147483647, not \"2147483648\""},
      {"line -1", "line: code must be a whole number from 0 to 4294967295, not \"-1\""},
      {"req6 1 2 x 4", "req6: f2 must be a number such as 0.5, not \"x\""},
      {"req6 1 2 nan 4", "req6: f2 must be a number such as 0.5, not \"nan\""},
      {"req8 \"open", "a quotation mark is not closed: req8 \"open"},
  };
  for (const auto& testCase : cases) {
    const ParsedCommand command = ParseCommand(testCase.line);
    EXPECT_EQ(command.kind, Kind::kWrong) << testCase.line;
    EXPECT_EQ(command.error, testCase.error);
  }
}

TEST(Commands, HelpReleaseALineAndEmptyLinesAreKnownAsWhatTheyAre) {
  EXPECT_EQ(ParseCommand("line 65536").ispCode, 65536U);
  EXPECT_EQ(ParseCommand("release").kind, Kind::kRelease);
  EXPECT_EQ(ParseCommand("help").kind, Kind::kHelp);
  EXPECT_EQ(ParseCommand("   ").kind, Kind::kNothing);
  EXPECT_EQ(ParseCommand("# req4 1 2").kind, Kind::kNothing);
  EXPECT_THAT(CommandHelp(), testing::HasSubstr("  camera format a b c d "));
}

}  // namespace
}  // namespace qv_connect
