// A look into a database from outside, with SQLite alone.
#ifndef TESTS_SUPPORT_SQL_H
#define TESTS_SUPPORT_SQL_H

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tests {

// Runs the statements; each row's columns joined by '|'.
inline std::vector<std::string> Sql(const std::filesystem::path& file, const std::string& statements) {
  std::vector<std::string> rows;
  const auto keep = [](void* kept, int count, char** columns, char**) {
    std::string row;
    for (int i = 0; i < count; ++i) row += (i == 0 ? "" : "|") + std::string(columns[i] != nullptr ? columns[i] : "");
    static_cast<std::vector<std::string>*>(kept)->push_back(row);
    return 0;
  };
  const std::u8string path = file.u8string();
  sqlite3* database = nullptr;
  EXPECT_EQ(sqlite3_open(reinterpret_cast<const char*>(path.c_str()), &database), SQLITE_OK);
  sqlite3_busy_timeout(database, 5000);
  EXPECT_EQ(sqlite3_exec(database, statements.c_str(), keep, &rows, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
  sqlite3_close(database);
  return rows;
}

}  // namespace tests

#endif
