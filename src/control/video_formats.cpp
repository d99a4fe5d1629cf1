#include "control/video_formats.h"

#include <string_view>

#include "qv_data_interface/parameters.h"

namespace qv_data_interface {

std::vector<std::int32_t> ParseFormats(const char* formats) {
  std::vector<std::int32_t> known;
  std::string_view rest = formats != nullptr ? formats : "";
  while (!rest.empty()) {
    const std::size_t comma = rest.find(',');
    const std::string_view piece = rest.substr(0, comma);
    if (piece == "264") known.push_back(QV_VIDEO_FORMAT_H264);
    if (piece == "265") known.push_back(QV_VIDEO_FORMAT_H265);
    rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
  }
  return known;
}

}  // namespace qv_data_interface
