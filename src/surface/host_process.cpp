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
  char buffer[kMaxPath] = {};
  const DWORD length = GetModuleFileNameA(nullptr, buffer, static_cast<DWORD>(kMaxPath));
  return std::string(buffer, length);
}
#else
constexpr char kSeparator = '/';

std::string HostPath() {
  char buffer[kMaxPath] = {};
  const ssize_t length = readlink("/proc/self/exe", buffer, kMaxPath);
  return length > 0 ? std::string(buffer, static_cast<std::size_t>(length)) : std::string();
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
