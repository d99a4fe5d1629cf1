// The list of video formats in an authentication answer.
//
// Threads: a pure function. Ownership: values.
#ifndef CONTROL_VIDEO_FORMATS_H
#define CONTROL_VIDEO_FORMATS_H

#include <cstdint>
#include <vector>

namespace qv_data_interface {

// The pieces between the commas that are exactly "264" or "265", in their order. formats may be null.
std::vector<std::int32_t> ParseFormats(const char* formats);

}  // namespace qv_data_interface

#endif
