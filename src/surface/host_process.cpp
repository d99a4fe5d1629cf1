#include "surface/host_process.h"

#include "surface/host_path.h"

namespace qv_data_interface {

std::optional<std::string> HostProcessName() {
  const std::string path = HostPath();
  const std::size_t separator = path.rfind(kHostPathSeparator);
  if (separator == std::string::npos) return std::nullopt;
  return path.substr(separator + 1);
}

}  // namespace qv_data_interface
