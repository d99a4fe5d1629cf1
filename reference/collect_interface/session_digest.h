// Threads: no state.
#ifndef REFERENCE_COLLECT_INTERFACE_SESSION_DIGEST_H
#define REFERENCE_COLLECT_INTERFACE_SESSION_DIGEST_H

#include <string>
#include <string_view>

namespace collect_interface {

// What stands for a session id in the database, see schema.h.
std::string SessionDigest(std::string_view sessionId);

}  // namespace collect_interface

#endif
