// The commands of a client and the kinds of their arguments.
//
// Threads: a pure function. Ownership: nothing is kept.
#ifndef QV_CLOUD_COMMANDS_H
#define QV_CLOUD_COMMANDS_H

#include <json/value.h>

#include <cstdint>

namespace qv_cloud {

// Throws Malformed unless args are what the command of that slot takes.
void CheckCommand(std::uint32_t slot, const Json::Value& args);

}  // namespace qv_cloud

#endif
