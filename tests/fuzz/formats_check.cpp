#include <sstream>
#include <string>

#include "control/video_formats.h"
#include "tests/fuzz/checks.h"

namespace fuzz {

bool CheckFormats(std::string_view input) {
  const std::string text(input.substr(0, input.find('\0')));
  std::vector<std::int32_t> expected;
  std::istringstream stream(text);
  for (std::string piece; std::getline(stream, piece, ',');) {
    if (piece == "264" || piece == "265") expected.push_back(std::stoi(piece));
  }
  Require(qv_data_interface::ParseFormats(text.c_str()) == expected, "the known pieces count, in their order");
  return true;
}

}  // namespace fuzz
