#include "surface/host_process.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace qv_data_interface {
namespace {

constexpr std::size_t kMaxPath = 260;

#ifdef _WIN32
constexpr char kSeparator = '\\';

std::string HostPath() {
  // One more than asked for: a path that is cut may come without its NUL.
  char buffer[kMaxPath + 1] = {};
  GetModuleFileNameA(nullptr, buffer, static_cast<DWORD>(kMaxPath));
  return buffer;
}
#else
constexpr char kSeparator = '/';

std::string HostPath() {
  // One more than asked for: readlink writes no NUL.
  char buffer[kMaxPath + 1] = {};
  return readlink("/proc/self/exe", buffer, kMaxPath) > 0 ? buffer : "";
}
#endif

}  // namespace

std::optional<std::string> HostProcessName() {
  const std::string path = HostPath();
  const std::size_t separator = path.rfind(kSeparator);
  if (separator == std::string::npos) return std::nullopt;
  return path.substr(separator + 1);
}

}  // namespace qv_data_interface
