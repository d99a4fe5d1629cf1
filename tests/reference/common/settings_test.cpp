#include "reference/common/settings.h"

#include <gtest/gtest.h>

#include <cstdlib>

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
  SetVariable("QV_REFERENCE_DATA_DIR", "directory from outside");
  SetVariable("QV_REFERENCE_CA_FILE", "file from outside");
  SetVariable("QV_REFERENCE_PROXY", "proxy from outside");
  SetVariable("QV_REFERENCE_OTLP_ENDPOINT", "endpoint from outside");
  SetVariable("QV_REFERENCE_OTLP_HEADERS", "headers from outside");
  EXPECT_EQ(reference::DataDirectory(), "directory from outside");
  EXPECT_EQ(reference::AuthorityFile(), "file from outside");
  EXPECT_EQ(reference::Proxy(), "proxy from outside");
  EXPECT_EQ(reference::OtlpEndpoint(), "endpoint from outside");
  EXPECT_EQ(reference::OtlpHeaders(), "headers from outside");
  reference::SetDataDirectory("directory");
  reference::SetAuthorityFile("file");
  reference::SetProxy("proxy");
  EXPECT_EQ(reference::DataDirectory(), "directory");
  EXPECT_EQ(reference::AuthorityFile(), "file");
  EXPECT_EQ(reference::Proxy(), "proxy");
  reference::SetDataDirectory("");
  EXPECT_TRUE(reference::DataDirectory().is_absolute())
      << "empty is the user's own, not " << reference::DataDirectory();
}

}  // namespace
