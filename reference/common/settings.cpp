#include "reference/common/settings.h"

#include <array>
#include <cstdlib>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <type_traits>

namespace reference {
namespace {

constexpr std::size_t kMaxTextBytes = 4095;

// A bounded text in place, without a destructor: a service's thread may still ask while the process ends, and nothing is
// left behind when the library is unloaded.
class Setting {
 public:
  constexpr explicit Setting(const char* variable) : variable(variable) {}

  void Set(const std::string& newValue) {
    if (newValue.size() > kMaxTextBytes) {
      throw std::length_error("a setting has " + std::to_string(newValue.size()) + " bytes, at most " +
                              std::to_string(kMaxTextBytes) + " are allowed");
    }
    const std::lock_guard<std::mutex> lock(mutex);
    value[newValue.copy(value.data(), kMaxTextBytes)] = '\0';
    isSet = true;
  }

  std::string Get() {
    const std::lock_guard<std::mutex> lock(mutex);
    if (isSet) return value.data();
    const char* text = std::getenv(variable);
    return text != nullptr ? text : "";
  }

 private:
  const char* const variable;
  std::mutex mutex;
  bool isSet = false;
  std::array<char, kMaxTextBytes + 1> value{};
};
static_assert(std::is_trivially_destructible_v<Setting>);

constinit Setting dataDirectory("QV_REFERENCE_DATA_DIR");
constinit Setting authorityFile("QV_REFERENCE_CA_FILE");
constinit Setting proxy("QV_REFERENCE_PROXY");

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
