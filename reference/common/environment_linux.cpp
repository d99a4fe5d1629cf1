#include <cstdlib>

#include "reference/common/environment.h"

namespace reference {

std::string EnvironmentText(const char* name) {
  const char* const text = std::getenv(name);
  return text != nullptr ? text : "";
}

std::filesystem::path UserDataRoot() {
  const std::string data = EnvironmentText("XDG_DATA_HOME");
  if (!data.empty()) return data;
  const std::string home = EnvironmentText("HOME");
  return home.empty() ? std::filesystem::path() : std::filesystem::path(home) / ".local" / "share";
}

}  // namespace reference
