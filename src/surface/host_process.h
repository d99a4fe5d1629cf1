// The program that hosts the library.
#ifndef SURFACE_HOST_PROCESS_H
#define SURFACE_HOST_PROCESS_H

#include <optional>
#include <string>

namespace qv_data_interface {

// The file name of the host's executable, taken from at most 260 characters of its path; nothing when the path is not
// known or has no separator. From any thread.
std::optional<std::string> HostProcessName();

}  // namespace qv_data_interface

#endif
