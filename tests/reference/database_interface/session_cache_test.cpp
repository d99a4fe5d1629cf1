#include <gtest/gtest.h>

#include "database_interface/database_interface.h"
#include "reference/common/settings.h"
#include "tests/support/sql.h"
#include "tests/support/temporary_directory.h"

namespace database_interface {
namespace {

// The year 2100.
constexpr std::int64_t kFarFuture = 4102444800000;

class SessionCacheTest : public testing::Test {
 protected:
  SessionCacheTest() { reference::SetDataDirectory(directory.path); }
  // The database is let go before its directory is.
  void TearDown() override {
    reference::SetDataDirectory(directory / "nothing.here");
    tests::WriteFile(directory / "nothing.here", "");
    Load("any");
  }

  static std::int32_t Save(const std::string& key, const std::string& text, std::int64_t expiry = kFarFuture) {
    return IDatabaseInterface::GetDbInstance()->SaveSessionCache(key.c_str(), text.c_str(), expiry);
  }
  static std::string Load(const std::string& key, std::int64_t minimumExpiry = 0) {
    std::string text = "untouched";
    const std::int32_t found = IDatabaseInterface::GetDbInstance()->LoadSessionCache(key.c_str(), minimumExpiry, text);
    EXPECT_EQ(found >= 1, text != "untouched");
    return text;
  }

  std::filesystem::path File() const { return directory / "session_cache.db"; }

  tests::TemporaryDirectory directory;
};

TEST_F(SessionCacheTest, TheNewestRowOfAKeyCountsBeyondTheMinimumExpiry) {
  IDatabaseInterface::GetDbInstance();
  EXPECT_TRUE(std::filesystem::is_empty(directory.path)) << "the first use makes the file";
  EXPECT_EQ(Load("key"), "untouched");
  ASSERT_EQ(Save("key", "old", kFarFuture + 10), 0);
  ASSERT_EQ(Save("key", "new", kFarFuture), 0);
  EXPECT_EQ(Load("key", kFarFuture - 1), "new");
  EXPECT_EQ(Load("key", kFarFuture), "untouched");
  EXPECT_EQ(Load("another key"), "untouched");
}

TEST_F(SessionCacheTest, ASaveTakesTheRowsPastTheirTimeAway) {
  ASSERT_EQ(Save("past", "text", 1000), 0);
  ASSERT_EQ(Save("future", "text"), 0);
  // Read from outside while the cache is open, as after a kill: what was acknowledged is there.
  EXPECT_EQ(tests::Sql(File(), "SELECT cache_key FROM session_cache"), std::vector<std::string>{"future"});
}

#ifndef _WIN32  // whose files have access lists instead, and cannot be taken away while they are open
TEST_F(SessionCacheTest, NoFileOfItIsOpenToOtherUsers) {
  ASSERT_EQ(Save("key", "text"), 0);
  for (const auto& entry : std::filesystem::directory_iterator(directory.path)) {
    const auto others = entry.status().permissions() & ~std::filesystem::perms::owner_all;
    EXPECT_EQ(others, std::filesystem::perms::none) << entry.path();
  }
}

TEST_F(SessionCacheTest, AFileTakenAwayIsMadeAnew) {
  ASSERT_EQ(Save("key", "text"), 0);
  std::filesystem::remove_all(directory.path);
  EXPECT_EQ(Save("key", "text"), 0);
  EXPECT_TRUE(std::filesystem::exists(File()));
}
#endif

TEST_F(SessionCacheTest, NullTextsAreRefused) {
  std::string text;
  EXPECT_EQ(IDatabaseInterface::GetDbInstance()->SaveSessionCache(nullptr, "text", kFarFuture), -1);
  EXPECT_EQ(IDatabaseInterface::GetDbInstance()->SaveSessionCache("key", nullptr, kFarFuture), -1);
  EXPECT_EQ(IDatabaseInterface::GetDbInstance()->LoadSessionCache(nullptr, 0, text), 0);
}

}  // namespace
}  // namespace database_interface
