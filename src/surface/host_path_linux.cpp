#include <unistd.h>

#include "surface/host_path.h"

namespace qv_data_interface {

const char kHostPathSeparator = '/';

std::string HostPath() {
  // One more than asked for: readlink writes no NUL.
  char buffer[kMaxHostPath + 1] = {};
  return readlink("/proc/self/exe", buffer, kMaxHostPath) > 0 ? buffer : "";
}

}  // namespace qv_data_interface
