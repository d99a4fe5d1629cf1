// The instance record as the session cache keeps it: one JSON object, without the answer's header.
//
// Threads: from any thread; nothing is shared.
#ifndef SESSION_INSTANCE_INFO_CODEC_H
#define SESSION_INSTANCE_INFO_CODEC_H

#include <cstdint>
#include <string>

#include "pass_interface/instance_info.h"

namespace qv_data_interface {

// Replaces json. Every key is written, whatever its value.
void InstanceInfoToJson(const pass_interface::InstanceInfo& info, std::string& json);

// Fills info, a freshly made record, from a NUL-terminated text. 0 on success. -1 with a log line when the text is no
// JSON or lacks a required key; info is then partly filled. Optional keys of another type are passed over.
std::int32_t ParseInstanceInfo(const char* json, pass_interface::InstanceInfo& info);

}  // namespace qv_data_interface

#endif
