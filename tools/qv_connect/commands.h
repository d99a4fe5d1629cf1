// The commands that a line of text can give: a table of names, arguments and operations.
//
// Threads: no shared state but the constant table. A parsed command owns copies of its texts.
#ifndef TOOLS_QV_CONNECT_COMMANDS_H
#define TOOLS_QV_CONNECT_COMMANDS_H

#include <cstdint>
#include <functional>
#include <string>

#include "qv_data_interface/data_interface.h"

namespace qv_connect {

struct ParsedCommand {
  enum class Kind { kNothing, kWrong, kHelp, kRelease, kLine, kCall };

  Kind kind = Kind::kNothing;
  std::string error;          // kWrong: what was wrong and what is allowed
  std::uint32_t ispCode = 0;  // kLine
  // kLine and kCall: hands the command to the library and returns its result.
  std::function<std::int32_t(qv_data_interface::IQVDataInterface&)> call;
};

// One line: a name and its arguments, apart by blanks; a text with blanks stands in double quotes. An empty line and
// one that begins with # are nothing.
ParsedCommand ParseCommand(const std::string& line);

// One line a command, with its arguments.
std::string CommandHelp();

}  // namespace qv_connect

#endif
