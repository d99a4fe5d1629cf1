#include "tools/qv_connect/commands.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iomanip>
#include <limits>
#include <sstream>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "qv_data_interface/dummy_req_interface.h"

namespace qv_connect {
namespace {

using qv_data_interface::IQVDataDummyReqInterface;
using qv_data_interface::IQVDataInterface;
using Words = std::vector<std::string>;
using Kind = ParsedCommand::Kind;

struct CommandRow {
  std::string name;
  Words arguments;
  std::string help;
  std::function<ParsedCommand(const Words& values)> parse;
};

ParsedCommand Wrong(std::string error) {
  ParsedCommand command;
  command.kind = Kind::kWrong;
  command.error = std::move(error);
  return command;
}

std::string Usage(const CommandRow& row) {
  std::string text = row.name;
  for (const std::string& argument : row.arguments) text += " " + argument;
  return text;
}

// A text argument is kept as a string until the call is made.
template <class T>
using Stored = std::conditional_t<std::is_same_v<T, const char*>, std::string, T>;

bool Read(const std::string& word, std::string& value, std::string&) {
  value = word;
  return true;
}

bool Read(const std::string& word, float& value, std::string& allowed) {
  allowed = "a number such as 0.5";
  const char* const end = word.data() + word.size();
  const auto [rest, error] = std::from_chars(word.data(), end, value);
  return error == std::errc() && rest == end && std::isfinite(value);
}

template <class Integer>
requires std::is_integral_v<Integer>
bool Read(const std::string& word, Integer& value, std::string& allowed) {
  allowed = "a whole number from " + std::to_string(std::numeric_limits<Integer>::min()) + " to " +
            std::to_string(std::numeric_limits<Integer>::max());
  const char* const end = word.data() + word.size();
  const auto [rest, error] = std::from_chars(word.data(), end, value);
  return error == std::errc() && rest == end;
}

template <class T>
const T& Passed(const T& value) {
  return value;
}

const char* Passed(const std::string& value) {
  return value.c_str();
}

// Reads the words into values; the first one that does not fit is described in error.
template <class Values, std::size_t... kIndex>
bool ReadAll(const CommandRow& row, const Words& words, Values& values, std::string& error,
             std::index_sequence<kIndex...>) {
  if (words.size() != sizeof...(kIndex)) {
    error = row.name + " takes " + std::to_string(sizeof...(kIndex)) + " arguments, not " +
            std::to_string(words.size()) + ": " + Usage(row);
    return false;
  }
  [[maybe_unused]] const auto readOne = [&](std::size_t index, auto& value) {
    std::string allowed;
    if (Read(words[index], value, allowed)) return true;
    error = row.name + ": " + row.arguments[index] + " must be " + allowed + ", not \"" + words[index] + "\"";
    return false;
  };
  return (readOne(kIndex, std::get<kIndex>(values)) && ...);
}

// The row whose words become the arguments of one operation; the types come from the operation itself.
template <class Interface, class... Arguments>
CommandRow Operation(std::string name, Words arguments, std::string help,
                     std::int32_t (Interface::*operation)(Arguments...)) {
  CommandRow row{std::move(name), std::move(arguments), std::move(help), nullptr};
  row.parse = [row, operation](const Words& words) {
    std::tuple<Stored<Arguments>...> values;
    std::string error;
    if (!ReadAll(row, words, values, error, std::index_sequence_for<Arguments...>())) return Wrong(std::move(error));
    ParsedCommand command;
    command.kind = Kind::kCall;
    command.call = [values = std::move(values), operation](IQVDataInterface& connection) -> std::int32_t {
      auto* const target = dynamic_cast<Interface*>(&connection);
      if (target == nullptr) return -1;
      return std::apply([&](const auto&... value) { return (target->*operation)(Passed(value)...); }, values);
    };
    return command;
  };
  return row;
}

CommandRow Line() {
  CommandRow row = Operation("line", {"code"}, "move to another carrier line; 65536 is the default one",
                             &IQVDataInterface::ChangeIsp);
  row.parse = [parse = row.parse](const Words& words) {
    ParsedCommand command = parse(words);
    if (command.kind != Kind::kCall) return command;
    command.kind = Kind::kLine;
    std::string allowed;
    Read(words[0], command.ispCode, allowed);
    return command;
  };
  return row;
}

CommandRow Plain(std::string name, std::string help, Kind kind) {
  CommandRow row{std::move(name), {}, std::move(help), nullptr};
  row.parse = [row, kind](const Words& words) {
    if (!words.empty()) return Wrong(row.name + " takes no arguments");
    ParsedCommand command;
    command.kind = kind;
    return command;
  };
  return row;
}

const std::vector<CommandRow>& Table() {
  using I = IQVDataInterface;
  static const std::vector<CommandRow> table = {
      Operation("mic", {"a", "b", "c"}, "microphone parameters", &I::SendInMicParamReq),
      Operation("camera", {"format", "a", "b", "c", "d"}, "camera parameters; format 265 is refused",
                &I::SendInCameraParamReq),
      Line(),
      Operation("req3", {"a", "b", "c", "count"}, "pass-through; count must not be 0", &I::SendInReq3),
      Operation("req4", {"a", "b"}, "pass-through", &I::SendInReq4),
      Operation("req5", {"f1", "f2", "f3", "f4", "f5", "f6", "f7", "f8"}, "pass-through", &I::SendInReq5),
      Operation("req6", {"a", "f1", "f2", "f3"}, "pass-through", &I::SendInReq6),
      Operation("req7", {"text1", "text2"}, "pass-through", &I::SendInReq7),
      Operation("req8", {"text"}, "pass-through; qv_cloud sends it back", &I::SendInReq8),
      Operation("req9", {"text"}, "pass-through", &I::SendInReq9),
      Operation("req10", {"a", "b"}, "pass-through", &I::SendInReq10),
      Operation("req11", {"a", "b", "c", "d"}, "pass-through", &I::SendInReq11),
      Operation("req13", {"a", "b"}, "pass-through", &I::SendInReq13),
      Operation("req15", {"a", "b"}, "pass-through; qv_cloud takes a as the new frame rate", &I::SendInReq15),
      Operation("req16", {"a", "b"}, "pass-through", &I::SendInReq16),
      Operation("req17", {"a"}, "pass-through", &I::SendInReq17),
      Operation("dummy", {}, "the request without arguments", &IQVDataDummyReqInterface::SendDummyReq),
      Plain("release", "end the connection and the program", Kind::kRelease),
      Plain("help", "show this list", Kind::kHelp),
  };
  return table;
}

// False when a quotation mark is not closed.
bool Split(const std::string& line, Words& words) {
  std::istringstream stream(line);
  while (stream >> std::ws && stream.peek() != std::istringstream::traits_type::eof()) {
    std::string word;
    if (!(stream >> std::quoted(word))) return false;
    words.push_back(std::move(word));
  }
  return true;
}

}  // namespace

ParsedCommand ParseCommand(const std::string& line) {
  Words words;
  if (!Split(line, words)) return Wrong("a quotation mark is not closed: " + line);
  if (words.empty() || words[0][0] == '#') return {};
  const auto row =
      std::find_if(Table().begin(), Table().end(), [&](const auto& entry) { return entry.name == words[0]; });
  if (row == Table().end())
    return Wrong("there is no command \"" + words[0] + "\"; \"help\" lists those that there are");
  words.erase(words.begin());
  return row->parse(words);
}

std::string CommandHelp() {
  std::ostringstream text;
  for (const CommandRow& row : Table()) {
    text << "  " << std::left << std::setw(36) << Usage(row) << row.help << "\n";
  }
  return text.str();
}

}  // namespace qv_connect
