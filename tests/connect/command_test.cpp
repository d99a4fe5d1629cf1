// A wrong line says why. That every name reaches its own operation is seen where a cloud is at the other end.
#include "tests/support/transcribed.h"
#include "tools/qv_connect/commands.h"

namespace qv_connect {
namespace {

using Commands = tests::Transcribed<>;

TEST_F(Commands, AWrongLineSaysWhatWasWrongAndWhatIsAllowed) {
  ForEachCase([](const std::string& line) {
    constexpr const char* kKinds[] = {"nothing", "wrong: ", "help", "release", "line ", "call"};
    const ParsedCommand command = ParseCommand(line);
    return kKinds[static_cast<std::size_t>(command.kind)] + command.error +
           (command.ispCode != 0 ? std::to_string(command.ispCode) : "");
  });
  for (const char* const line : {"", "   ", "# req4 1 2"}) {
    EXPECT_EQ(ParseCommand(line).kind, ParsedCommand::Kind::kNothing) << line;
  }
}

TEST_F(Commands, HelpNamesEveryCommandWithItsArguments) {
  Say(CommandHelp());
}

}  // namespace
}  // namespace qv_connect
