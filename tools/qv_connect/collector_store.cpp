#include "tools/qv_connect/collector_store.h"

#include <sqlite3.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace qv_connect {
namespace {

constexpr const char* kCollectorFile = "collector.db";
constexpr int kBusyTimeoutMs = 1000;
// The end of the year 9999. The file may say anything, and times are subtracted from each other.
constexpr std::int64_t kLastTimeMs = 253402300799999;

// The messages of one connection have the time of its begin in common. A session id that another connection had before
// is one from the cache.
constexpr const char* kMessages = R"(
  WITH begins AS (SELECT message_id, time FROM milestones WHERE name = 'startGetInstanceInfo'),
       sessions AS (SELECT session, min(time) AS since FROM messages JOIN begins ON message_id = id GROUP BY session)
  SELECT id, begins.time, process_name, collect_type, collect_status, timestamp, messages.session, sessions.since,
    error_code, detail_text
  FROM messages JOIN begins ON message_id = id JOIN sessions ON sessions.session = messages.session
  WHERE target_id = ?1 ORDER BY begins.time DESC, process_name, id)";
constexpr const char* kMilestones = "SELECT name, time FROM milestones WHERE message_id = ?1";

struct Close {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, Close>;
using Statement = std::unique_ptr<sqlite3_stmt, Close>;

[[noreturn]] void Fail(sqlite3* database) {
  throw std::runtime_error(sqlite3_errmsg(database));
}

Database Open(const std::filesystem::path& file) {
  const std::u8string name = file.u8string();
  sqlite3* raw = nullptr;
  const int result = sqlite3_open_v2(reinterpret_cast<const char*>(name.c_str()), &raw, SQLITE_OPEN_READONLY, nullptr);
  Database database(raw);
  if (result != SQLITE_OK) throw std::runtime_error(sqlite3_errstr(result));
  sqlite3_busy_timeout(raw, kBusyTimeoutMs);
  return database;
}

Statement Prepare(sqlite3* database, const char* sql) {
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(database, sql, -1, &raw, nullptr) != SQLITE_OK) Fail(database);
  return Statement(raw);
}

// False when there are no more rows.
bool Step(sqlite3* database, sqlite3_stmt* statement) {
  const int result = sqlite3_step(statement);
  if (result != SQLITE_ROW && result != SQLITE_DONE) Fail(database);
  return result == SQLITE_ROW;
}

std::string Text(sqlite3_stmt* row, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  return text != nullptr ? text : "";
}

std::int64_t Time(sqlite3_stmt* row, int column) {
  return std::clamp<std::int64_t>(sqlite3_column_int64(row, column), 0, kLastTimeMs);
}

Milestones MilestonesOf(sqlite3* database, std::int64_t messageId) {
  const Statement row = Prepare(database, kMilestones);
  sqlite3_bind_int64(row.get(), 1, messageId);
  Milestones milestones;
  while (Step(database, row.get())) milestones[Text(row.get(), 0)] = Time(row.get(), 1);
  return milestones;
}

std::vector<StoredConnection> Read(sqlite3* database, const std::string& target, std::size_t limit) {
  const Statement statement = Prepare(database, kMessages);
  sqlite3_stmt* const row = statement.get();
  sqlite3_bind_text(row, 1, target.c_str(), -1, SQLITE_STATIC);
  std::vector<StoredConnection> connections;
  while (Step(database, row)) {
    const std::int64_t beginMs = Time(row, 1);
    const std::string process = Text(row, 2);
    if (connections.empty() || connections.back().beginMs != beginMs || connections.back().process != process) {
      if (connections.size() == limit) break;
      connections.push_back({beginMs, process, {}});
    }
    connections.back().messages.push_back({sqlite3_column_int(row, 3), sqlite3_column_int(row, 4), Time(row, 5),
                                           Text(row, 6), Time(row, 7), Text(row, 8), Text(row, 9),
                                           MilestonesOf(database, sqlite3_column_int64(row, 0))});
  }
  return connections;
}

}  // namespace

std::vector<StoredConnection> ReadConnections(const std::filesystem::path& dataDirectory, const std::string& target,
                                              std::size_t limit) {
  const std::filesystem::path file = dataDirectory / kCollectorFile;
  try {
    return Read(Open(file).get(), target, limit);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(file.string() + ": " + error.what());
  }
}

}  // namespace qv_connect
