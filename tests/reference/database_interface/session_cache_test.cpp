#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <thread>

#include "base/base_log_interface.h"
#include "database_interface/database_interface.h"
#include "reference/common/settings.h"
#include "reference/common/sqlite.h"
#include "tests/reference/common/temporary_directory.h"

namespace database_interface {
namespace {

using reference::sqlite::Connection;

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

  int LogLinesAbout(const std::function<void()>& work) {
    const auto logger = base::IBaseLogInterface::GetLogInstance();
    logger->SetLogPath((directory / "log").string().c_str());
    logger->SetLogName("cache");
    logger->StartLog();
    // Lines that waited for the start are of an earlier test.
    const int before = CountLogLines();
    work();
    return CountLogLines() - before;
  }

  int CountLogLines() const {
    const auto lines = tests::ReadLines(directory / "log/cache.log");
    return static_cast<int>(std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
      return line.find("[REFERENCE_DATABASE_INTERFACE]session_cache.db cannot be used: ") != std::string::npos;
    }));
  }

  std::filesystem::path File() const { return directory / "session_cache.db"; }

  tests::TemporaryDirectory directory;
};

TEST_F(SessionCacheTest, NothingIsMadeBeforeTheFirstUse) {
  IDatabaseInterface::GetDbInstance();
  EXPECT_TRUE(std::filesystem::is_empty(directory.path));
  EXPECT_EQ(Load("key"), "untouched");
  EXPECT_TRUE(std::filesystem::exists(File()));
}

TEST_F(SessionCacheTest, ARowCountsOnlyBeyondTheMinimumExpiry) {
  ASSERT_EQ(Save("key", "text", kFarFuture), 0);
  const struct {
    std::int64_t minimumExpiry;
    const char* found;
  } cases[] = {{kFarFuture - 1, "text"}, {kFarFuture, "untouched"}, {kFarFuture + 1, "untouched"}};
  for (const auto& row : cases) EXPECT_EQ(Load("key", row.minimumExpiry), row.found) << row.minimumExpiry;
  EXPECT_EQ(Load("another key"), "untouched");
}

TEST_F(SessionCacheTest, ASecondSaveReplacesTextAndExpiry) {
  ASSERT_EQ(Save("key", "old", kFarFuture), 0);
  ASSERT_EQ(Save("key", "new", kFarFuture - 10), 0);
  EXPECT_EQ(Load("key"), "new");
  EXPECT_EQ(Load("key", kFarFuture - 10), "untouched");
}

TEST_F(SessionCacheTest, ASaveTakesTheRowsPastTheirTimeAway) {
  ASSERT_EQ(Save("past", "text", 1000), 0);
  ASSERT_EQ(Save("future", "text"), 0);
  // Read from outside while the cache is open, as after a kill: what was acknowledged is there.
  Connection reader(File(), "");
  EXPECT_EQ(reader.Run("UPDATE session_cache SET expiry = expiry WHERE cache_key = 'past'"), 0);
  EXPECT_EQ(reader.Run("UPDATE session_cache SET expiry = expiry WHERE cache_key = 'future'"), 1);
}

TEST_F(SessionCacheTest, NullTextsAreRefused) {
  const auto cache = IDatabaseInterface::GetDbInstance();
  std::string text;
  EXPECT_EQ(cache->SaveSessionCache(nullptr, "text", kFarFuture), -1);
  EXPECT_EQ(cache->SaveSessionCache("key", nullptr, kFarFuture), -1);
  EXPECT_EQ(cache->LoadSessionCache(nullptr, 0, text), 0);
}

TEST_F(SessionCacheTest, ACorruptFileIsMovedAsideAndMadeAnew) {
  const std::string garbage(8192, 'g');
  tests::WriteFile(File(), garbage);
  EXPECT_EQ(LogLinesAbout([] { EXPECT_EQ(Save("key", "text"), -1); }), 1);
  EXPECT_EQ(tests::ReadFile(directory / "session_cache.db.corrupt"), garbage);
  EXPECT_EQ(Save("key", "text"), 0);
  EXPECT_EQ(Load("key"), "text");
}

TEST_F(SessionCacheTest, AnUnusableDirectoryFailsEveryUseWithOneLogLine) {
  tests::WriteFile(directory / "file", "");
  reference::SetDataDirectory(directory / "file/below");
  const int lines = LogLinesAbout([] {
    EXPECT_EQ(Save("key", "text"), -1);
    EXPECT_EQ(Save("key", "text"), -1);
    EXPECT_EQ(Load("key"), "untouched");
  });
  EXPECT_EQ(lines, 1);
}

TEST_F(SessionCacheTest, ALockedDatabaseFailsASaveInTimeAndServesAgainAfterwards) {
  ASSERT_EQ(Save("key", "text"), 0);
  Connection other(File(), "");
  other.Run("BEGIN IMMEDIATE");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Save("key", "newer"), -1);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_EQ(Load("key"), "text");
  other.Run("ROLLBACK");
  EXPECT_EQ(Save("key", "newer"), 0);
}

TEST_F(SessionCacheTest, AnotherDirectoryAndAFileTakenAwayAreNoticed) {
  ASSERT_EQ(Save("key", "first"), 0);
  reference::SetDataDirectory(directory / "second");
  EXPECT_EQ(Load("key"), "untouched");
  ASSERT_EQ(Save("key", "second"), 0);
  std::filesystem::remove_all(directory / "second");
  EXPECT_EQ(Save("key", "third"), 0);
  EXPECT_TRUE(std::filesystem::exists(directory / "second/session_cache.db"));
  reference::SetDataDirectory(directory.path);
  EXPECT_EQ(Load("key"), "first");
}

TEST_F(SessionCacheTest, ThreadsFindTheirOwnRows) {
  const auto work = [](const std::string& key) {
    for (int i = 0; i < 50; ++i) {
      EXPECT_EQ(Save(key, key + std::to_string(i)), 0);
      EXPECT_EQ(Load(key), key + std::to_string(i));
    }
  };
  std::thread other(work, "a");
  work("b");
  other.join();
}

}  // namespace
}  // namespace database_interface
