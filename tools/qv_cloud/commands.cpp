#include "tools/qv_cloud/commands.h"

#include <string>
#include <string_view>

#include "tools/qv_cloud/json_text.h"

namespace qv_cloud {
namespace {

// U: unsigned 64-bit, I: signed 32-bit, F: floating point, T: text. One entry a slot.
constexpr std::uint32_t kFirstSlot = 2;
constexpr std::string_view kArguments[] = {"UU",   "UUUI", "FFFFFFFF", "IFFF",  "TT", "T",  "T", "TI", "UU",
                                           "UUUI", "III",  "UU",       "IIIUI", "UU", "UU", "I", ""};

bool IsOfKind(const Json::Value& value, char kind) {
  switch (kind) {
    case 'U':
      return value.isUInt64();
    case 'I':
      return value.isInt();
    case 'F':
      return value.isNumeric() || value.isNull();  // null: not a number, which JSON cannot write
    default:
      RequireText(value, "a text of the command");
      return true;
  }
}

}  // namespace

void CheckCommand(std::uint32_t slot, const Json::Value& args) {
  if (slot < kFirstSlot || slot - kFirstSlot >= std::size(kArguments)) {
    throw Malformed("no command has slot " + std::to_string(slot));
  }
  const std::string_view kinds = kArguments[slot - kFirstSlot];
  const std::string command = "command " + std::to_string(slot);
  if (!args.isArray() || args.size() != kinds.size()) {
    throw Malformed(command + " takes " + std::to_string(kinds.size()) + " arguments");
  }
  for (Json::ArrayIndex index = 0; index < args.size(); ++index) {
    if (!IsOfKind(args[index], kinds[index])) {
      throw Malformed(command + ": argument " + std::to_string(index + 1) + " has the wrong type or range");
    }
  }
}

}  // namespace qv_cloud
