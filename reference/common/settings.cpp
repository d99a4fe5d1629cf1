#include "reference/common/settings.h"

#include <array>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <type_traits>

#include "reference/common/environment.h"
#include "reference/common/path_text.h"

namespace reference {
namespace {

constexpr std::size_t kMaxTextBytes = 4095;

// A bounded text in place, without a destructor: a service's thread may still ask while the process ends, and nothing
// is left behind when the library is unloaded.
class Setting {
  // Held for one short copy. Not a std::mutex: on mingw that has a constructor and a destructor to run. A flag has
  // nothing to wait on, so who finds it held sleeps: yielding would never let a holder of lower priority run.
  class Lock {
   public:
    explicit Lock(std::atomic_flag& isHeld) : isHeld(isHeld) {
      while (isHeld.test_and_set(std::memory_order_acquire)) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ~Lock() { isHeld.clear(std::memory_order_release); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

   private:
    std::atomic_flag& isHeld;
  };

 public:
  constexpr explicit Setting(const char* variable) : variable(variable) {}

  void Set(const std::string& newValue) {
    if (newValue.size() > kMaxTextBytes) {
      throw std::length_error("a setting has " + std::to_string(newValue.size()) + " bytes, at most " +
                              std::to_string(kMaxTextBytes) + " are allowed");
    }
    const Lock lock(isHeld);
    value[newValue.copy(value.data(), kMaxTextBytes)] = '\0';
    isSet = true;
  }

  std::string Get() {
    {
      const Lock lock(isHeld);
      if (isSet) return value.data();
    }
    return EnvironmentText(variable);
  }

 private:
  const char* const variable;
  std::atomic_flag isHeld;
  bool isSet = false;
  std::array<char, kMaxTextBytes + 1> value{};
};
static_assert(std::is_trivially_destructible_v<Setting>);

constinit Setting dataDirectory("QV_REFERENCE_DATA_DIR");
constinit Setting authorityFile("QV_REFERENCE_CA_FILE");
constinit Setting proxy("QV_REFERENCE_PROXY");
constinit Setting otlpEndpoint("QV_REFERENCE_OTLP_ENDPOINT");
constinit Setting otlpHeaders("QV_REFERENCE_OTLP_HEADERS");

std::filesystem::path UserDataDirectory() {
  const std::filesystem::path root = UserDataRoot();
  return (root.empty() ? std::filesystem::temp_directory_path() : root) / "qv_data_interface";
}

}  // namespace

void SetDataDirectory(const std::filesystem::path& directory) {
  dataDirectory.Set(Utf8Text(directory));
}

std::filesystem::path DataDirectory() {
  const std::string text = dataDirectory.Get();
  return text.empty() ? UserDataDirectory() : PathOf(text);
}

void SetAuthorityFile(const std::filesystem::path& file) {
  authorityFile.Set(Utf8Text(file));
}

std::filesystem::path AuthorityFile() {
  return PathOf(authorityFile.Get());
}

void SetProxy(const std::string& url) {
  proxy.Set(url);
}

std::string Proxy() {
  return proxy.Get();
}

void SetOtlpEndpoint(const std::string& url) {
  otlpEndpoint.Set(url);
}

std::string OtlpEndpoint() {
  return otlpEndpoint.Get();
}

void SetOtlpHeaders(const std::string& headers) {
  otlpHeaders.Set(headers);
}

std::string OtlpHeaders() {
  return otlpHeaders.Get();
}

}  // namespace reference
