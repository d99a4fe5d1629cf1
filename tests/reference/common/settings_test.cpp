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
  const struct {
    const char* variable;
    std::function<std::string()> get;
    std::function<void(const char*)> set;
  } settings[] = {
      {"QV_REFERENCE_DATA_DIR", [] { return reference::DataDirectory().string(); },
       [](const char* text) { reference::SetDataDirectory(text); }},
      {"QV_REFERENCE_CA_FILE", [] { return reference::AuthorityFile().string(); },
       [](const char* text) { reference::SetAuthorityFile(text); }},
      {"QV_REFERENCE_PROXY", [] { return reference::Proxy(); }, [](const char* text) { reference::SetProxy(text); }},
  };
  for (const auto& setting : settings) {
    SetVariable(setting.variable, "from-the-variable");
    EXPECT_EQ(setting.get(), "from-the-variable") << setting.variable;
    setting.set("from-the-host");
    EXPECT_EQ(setting.get(), "from-the-host") << setting.variable;
  }
  reference::SetDataDirectory("");
  EXPECT_TRUE(reference::DataDirectory().is_absolute())
      << "empty is the user's own, not " << reference::DataDirectory();
}

}  // namespace
