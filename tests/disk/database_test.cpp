// Whatever the disk has done to the databases, the connection comes about, without the cache where it cannot be used,
// and the log names each database once.
#include <sqlite3.h>
#ifndef QV_NO_FULL_DISK
#include <unistd.h>
#endif

#include <array>
#include <cerrno>
#include <fstream>
#include <list>

#include "reference/common/settings.h"
#include "reference/common/sqlite.h"
#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

constexpr std::array kDatabases = {"session_cache.db", "collector.db"};

#ifndef QV_NO_FULL_DISK
// From then on, for everything that SQLite writes, also in the services.
void FillDisk() {
  constexpr auto full = [](int file, const void* bytes, std::size_t count, off_t offset) -> ssize_t {
    // So the index beside the database grows; without, it would be another error.
    if (count == 1) return ::pwrite(file, bytes, count, offset);
    errno = ENOSPC;
    return -1;
  };
  sqlite3_vfs* const disk = sqlite3_vfs_find(nullptr);
  for (const char* const call : {"pwrite", "pwrite64"}) {
    disk->xSetSystemCall(disk, call, reinterpret_cast<sqlite3_syscall_ptr>(+full));
  }
}
#endif

class DiskTest;

struct Harm {
  const char* name;
  void (*inflict)(DiskTest& test);
  // What the log says once of each database, after its name.
  const char* line;
  // Whether the next connect finds its session in the cache.
  bool isMended;
};

class DiskTest : public EndToEnd {
 public:
  using EndToEnd::Sql;

  ~DiskTest() override {
    sqlite3_vfs* const disk = sqlite3_vfs_find(nullptr);
    disk->xSetSystemCall(disk, nullptr, nullptr);
  }

  template <class Do>
  void ForEachFile(Do&& work) {
    for (const char* const name : kDatabases) work(harmed / name);
  }
  void Overwrite(std::streamoff offset, const std::string& bytes) {
    ForEachFile([&](const std::filesystem::path& file) {
      std::fstream(file, std::ios::binary | std::ios::in | std::ios::out).seekp(offset) << bytes;
    });
  }
  void Lock() {
    ForEachFile([this](const std::filesystem::path& file) { lockers.emplace_back(file, "").Run("BEGIN IMMEDIATE"); });
  }

  std::filesystem::path harmed;

 protected:
  // Copies of the databases that the services have filled, which they have not opened yet.
  void SetUp() override {
    StartCloud();
    ASSERT_TRUE(ConnectToFirstFrame());
    controller->ReleasePhoneConnect();
    harmed = directory / "harmed";
    std::filesystem::create_directory(harmed);
    for (const char* const name : kDatabases) {
      Sql(name, "PRAGMA wal_checkpoint(TRUNCATE)");
      std::filesystem::copy_file(directory / name, harmed / name);
    }
    logBegin = Log().size();
  }
  std::size_t Lines(const std::string& text) const {
    const std::string log = Log().substr(logBegin);
    std::size_t count = 0;
    for (std::size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) ++count;
    return count;
  }

  std::list<reference::sqlite::Connection> lockers;
  std::size_t logBegin = 0;
};

class HarmedDatabase : public DiskTest, public testing::WithParamInterface<Harm> {};

TEST_P(HarmedDatabase, CostsTheCacheAndOneLineOfTheLogAndNothingElse) {
  GetParam().inflict(*this);
  ASSERT_FALSE(HasFailure());
  reference::SetDataDirectory(harmed);

  for (const std::uint64_t requests : {2U, GetParam().isMended ? 2U : 3U, GetParam().isMended ? 2U : 4U}) {
    ASSERT_TRUE(ConnectToFirstFrame());
    EXPECT_EQ(Stats().phoneConnects, requests);
    controller->ReleasePhoneConnect();
  }
  for (const char* const name : kDatabases) {
    EXPECT_EQ(Lines(name + std::string(GetParam().line)), 1U) << name;
    EXPECT_EQ(Lines(name), 1U) << name;
    const bool isAside = std::string(GetParam().line).ends_with("moved aside");
    EXPECT_EQ(std::filesystem::exists(harmed / (std::string(name) + ".corrupt")), isAside) << name;
  }
}

// From here on no row can be added, and none is there.
void Empty(DiskTest& test) {
  test.Sql("harmed/session_cache.db", "DELETE FROM session_cache; PRAGMA wal_checkpoint(TRUNCATE)");
}

constexpr Harm kHarms[] = {
    {"Missing", [](DiskTest& test) { std::filesystem::remove_all(test.harmed); }, " was missing and has been made",
     true},
    {"ADirectoryInItsPlace",
     [](DiskTest& test) {
       test.ForEachFile([](const auto& file) {
         std::filesystem::remove(file);
         std::filesystem::create_directory(file);
       });
     },
     " cannot be used: unable to open database file", false},
    {"AFileInPlaceOfTheDirectory",
     [](DiskTest& test) {
       std::filesystem::remove_all(test.harmed);
       std::ofstream(test.harmed) << "a file";
     },
     " cannot be used: filesystem error: ", false},
    // The header's write version: one that SQLite does not know makes the file read-only, for every user.
    {"ReadOnly",
     [](DiskTest& test) {
       Empty(test);
       test.Overwrite(18, "\x03");
     },
     " cannot be used: attempt to write a readonly database", false},
    {"Locked",
     [](DiskTest& test) {
       Empty(test);
       test.Lock();
     },
     " cannot be used: database is locked", false},
#ifndef QV_NO_FULL_DISK
    {"Full",
     [](DiskTest& test) {
       Empty(test);
       FillDisk();
     },
     " cannot be used: database or disk is full", false},
#endif
    {"Truncated",
     [](DiskTest& test) { test.ForEachFile([](const auto& file) { std::filesystem::resize_file(file, 5000); }); },
     " cannot be used: database disk image is malformed; it is moved aside", true},
    {"OfAnotherVersion",
     [](DiskTest& test) {
       test.Sql("harmed/session_cache.db", "ALTER TABLE session_cache RENAME COLUMN expiry TO another");
       test.Sql("harmed/collector.db", "ALTER TABLE messages RENAME COLUMN tag TO another");
     },
     " cannot be used: ", false},
    {"NoDatabase", [](DiskTest& test) { test.Overwrite(0, std::string(4096, 'x')); },
     " cannot be used: file is not a database; it is moved aside", true},
};

INSTANTIATE_TEST_SUITE_P(All, HarmedDatabase, testing::ValuesIn(kHarms),
                         [](const auto& tested) -> std::string { return tested.param.name; });

TEST_F(DiskTest, ARowThatAnotherKeyHasMadeCostsARequestAndOneLineAndIsReplaced) {
  Sql("harmed/session_cache.db", "UPDATE session_cache SET cipher_text = '" + std::string(768, 'A') + "'");
  reference::SetDataDirectory(harmed);
  for (int connects = 0; connects < 2; ++connects) {
    ASSERT_TRUE(ConnectToFirstFrame());
    controller->ReleasePhoneConnect();
    EXPECT_EQ(Stats().phoneConnects, 2U);
    EXPECT_EQ(Lines("[QV_DATA_INTERFACE]Aes256Decrypt Failed"), 1U);
  }
}

}  // namespace
}  // namespace end_to_end
