#include "reference/common/settings.h"

#include <cstdlib>
#include <mutex>
#include <optional>

namespace reference {
namespace {

class Setting {
 public:
  explicit Setting(const char* variable) : variable(variable) {}

  void Set(std::string newValue) {
    const std::lock_guard<std::mutex> lock(mutex);
    value = std::move(newValue);
  }

  std::string Get() {
    const std::lock_guard<std::mutex> lock(mutex);
    if (value) return *value;
    const char* text = std::getenv(variable);
    return text != nullptr ? text : "";
  }

 private:
  const char* const variable;
  std::mutex mutex;
  std::optional<std::string> value;
};

// Never destroyed: a service's thread may still ask while the process ends.
Setting& dataDirectory = *new Setting("QV_REFERENCE_DATA_DIR");
Setting& authorityFile = *new Setting("QV_REFERENCE_CA_FILE");
Setting& proxy = *new Setting("QV_REFERENCE_PROXY");

std::filesystem::path UserDataDirectory() {
#ifdef _WIN32
  const char* const homes[] = {"LOCALAPPDATA"};
  const char* const suffixes[] = {"qv_data_interface"};
#else
  const char* const homes[] = {"XDG_DATA_HOME", "HOME"};
  const char* const suffixes[] = {"qv_data_interface", ".local/share/qv_data_interface"};
#endif
  for (std::size_t i = 0; i < std::size(homes); ++i) {
    const char* home = std::getenv(homes[i]);
    if (home != nullptr && *home != '\0') return std::filesystem::path(home) / suffixes[i];
  }
  return std::filesystem::temp_directory_path() / "qv_data_interface";
}

}  // namespace

void SetDataDirectory(const std::filesystem::path& directory) {
  dataDirectory.Set(directory.string());
}

std::filesystem::path DataDirectory() {
  const std::string text = dataDirectory.Get();
  return text.empty() ? UserDataDirectory() : std::filesystem::path(text);
}

void SetAuthorityFile(const std::filesystem::path& file) {
  authorityFile.Set(file.string());
}

std::filesystem::path AuthorityFile() {
  return authorityFile.Get();
}

void SetProxy(const std::string& url) {
  proxy.Set(url);
}

std::string Proxy() {
  return proxy.Get();
}

}  // namespace reference
