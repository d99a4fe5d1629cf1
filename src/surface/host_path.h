// The host process's executable file, by the operating system. Threads: any.
#ifndef QV_SURFACE_HOST_PATH_H
#define QV_SURFACE_HOST_PATH_H

#include <cstddef>
#include <string>

namespace qv_data_interface {

// What follows the last one is the file's name.
extern const char kHostPathSeparator;

// Longer paths are cut.
constexpr std::size_t kMaxHostPath = 260;

// Empty when the system does not say.
std::string HostPath();

}  // namespace qv_data_interface

#endif
