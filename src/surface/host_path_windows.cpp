#include <windows.h>

#include "surface/host_path.h"

namespace qv_data_interface {

const char kHostPathSeparator = '\\';

std::string HostPath() {
  // One more than asked for: a path that is cut may come without its NUL.
  char buffer[kMaxHostPath + 1] = {};
  GetModuleFileNameA(nullptr, buffer, static_cast<DWORD>(kMaxHostPath));
  return buffer;
}

}  // namespace qv_data_interface
