#include "tools/qv_connect/timeline.h"

#include <sqlite3.h>

#include <memory>
#include <stdexcept>

namespace qv_connect {
namespace {

constexpr const char* kCollectorFile = "collector.db";
constexpr int kBusyTimeoutMs = 1000;

// A message is a snapshot of all milestones so far, and a later change of line replaces some of them: what a connection
// looked like at its first frame is in the first message that reports one (type 1, status 2).
constexpr const char* kMessagesOfTarget =
    "SELECT messages.id FROM messages JOIN milestones AS begin "
    "ON begin.message_id = messages.id AND begin.name = 'startGetInstanceInfo' WHERE messages.target_id = ?1 ";
constexpr const char* kFirstFrameOfThis =
    "AND begin.time >= ?2 AND collect_type = 1 AND collect_status = 2 ORDER BY messages.id LIMIT 1";
constexpr const char* kEndOfThis = "AND begin.time >= ?2 ORDER BY messages.id DESC LIMIT 1";
constexpr const char* kFirstFrameBefore =
    "AND begin.time < ?2 AND collect_type = 1 AND collect_status = 2 ORDER BY begin.time DESC, messages.id LIMIT 1";
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

Statement Prepare(sqlite3* database, const std::string& sql) {
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(database, sql.c_str(), -1, &raw, nullptr) != SQLITE_OK) Fail(database);
  return Statement(raw);
}

// False when there are no more rows.
bool Step(sqlite3* database, sqlite3_stmt* statement) {
  const int result = sqlite3_step(statement);
  if (result != SQLITE_ROW && result != SQLITE_DONE) Fail(database);
  return result == SQLITE_ROW;
}

std::optional<Milestones> Find(sqlite3* database, const char* condition, const std::string& target,
                               std::int64_t sinceMs) {
  const Statement message = Prepare(database, std::string(kMessagesOfTarget) + condition);
  sqlite3_bind_text(message.get(), 1, target.c_str(), -1, SQLITE_STATIC);
  sqlite3_bind_int64(message.get(), 2, sinceMs);
  if (!Step(database, message.get())) return std::nullopt;

  const Statement row = Prepare(database, kMilestones);
  sqlite3_bind_int64(row.get(), 1, sqlite3_column_int64(message.get(), 0));
  Milestones milestones;
  while (Step(database, row.get())) {
    const auto* name = reinterpret_cast<const char*>(sqlite3_column_text(row.get(), 0));
    if (name != nullptr) milestones[name] = sqlite3_column_int64(row.get(), 1);
  }
  return milestones;
}

}  // namespace

Timelines ReadTimelines(const std::filesystem::path& dataDirectory, const std::string& target, std::int64_t sinceMs) {
  Timelines timelines;
  const std::filesystem::path file = dataDirectory / kCollectorFile;
  try {
    const Database database = Open(file);
    timelines.current = Find(database.get(), kFirstFrameOfThis, target, sinceMs);
    if (!timelines.current) timelines.current = Find(database.get(), kEndOfThis, target, sinceMs);
    timelines.before = Find(database.get(), kFirstFrameBefore, target, sinceMs);
    if (!timelines.current) timelines.error = "the collector's file holds no milestones of this connection";
  } catch (const std::runtime_error& error) {
    timelines.error = file.string() + ": " + error.what();
  }
  return timelines;
}

}  // namespace qv_connect
