#include "reference/common/settings.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

namespace {

void SetVariable(const char* name, const char* value) {
#ifdef _WIN32
  _putenv_s(name, value);
#else
  ::setenv(name, value, 1);
#endif
}

// One test, since a setting of the host's cannot be unmade.
TEST(SettingsTest, TheHostsSettingWinsOverItsVariableAndTheVariableOverTheDefault) {
  using Text = std::filesystem::path;
  const struct {
    const char* variable;
    std::function<Text()> value;
    std::function<void(const char*)> set;
  } settings[] = {{"QV_REFERENCE_DATA_DIR", reference::DataDirectory, reference::SetDataDirectory},
                  {"QV_REFERENCE_CA_FILE", reference::AuthorityFile, reference::SetAuthorityFile},
                  {"QV_REFERENCE_PROXY", reference::Proxy, reference::SetProxy},
                  {"QV_REFERENCE_OTLP_ENDPOINT", reference::OtlpEndpoint, reference::SetOtlpEndpoint},
                  {"QV_REFERENCE_OTLP_HEADERS", reference::OtlpHeaders, reference::SetOtlpHeaders}};
  for (const auto& [variable, value, set] : settings) {
    SetVariable(variable, variable);
    EXPECT_EQ(value(), variable);
    set("the host's");
    EXPECT_EQ(value(), "the host's") << variable;
  }
  reference::SetDataDirectory("");
  EXPECT_TRUE(reference::DataDirectory().is_absolute())
      << "empty is the user's own, not " << reference::DataDirectory();
}

}  // namespace
