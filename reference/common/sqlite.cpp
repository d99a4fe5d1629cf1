#include "reference/common/sqlite.h"

#include <sqlite3.h>

#include <limits>
#include <new>

namespace reference::sqlite {
namespace {

// No text of ours comes near it; a file that claims longer ones is not ours.
constexpr int kMaxValueBytes = 16 * 1024 * 1024;

void Check(int code, sqlite3* handle) {
  if (code == SQLITE_OK) return;
  if (code == SQLITE_NOMEM || handle == nullptr) throw std::bad_alloc();
  throw Error(code, sqlite3_errmsg(handle));
}

}  // namespace

bool Error::IsCorrupt() const {
  const int primary = code & 0xff;
  return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

Rows::~Rows() {
  sqlite3_reset(statement);
}

void Rows::Bind(int index, std::int64_t value) {
  Check(sqlite3_bind_int64(statement, index, value), sqlite3_db_handle(statement));
}

void Rows::Bind(int index, std::string_view value) {
  Check(sqlite3_bind_text64(statement, index, value.data(), value.size(), SQLITE_TRANSIENT, SQLITE_UTF8),
        sqlite3_db_handle(statement));
}

bool Rows::Next() {
  const int code = sqlite3_step(statement);
  if (code == SQLITE_ROW) return true;
  if (code != SQLITE_DONE) Check(code, sqlite3_db_handle(statement));
  return false;
}

std::string Rows::Text(int column) const {
  const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  const int size = sqlite3_column_bytes(statement, column);
  return text != nullptr ? std::string(text, static_cast<std::size_t>(size)) : std::string();
}

Connection::Connection(const std::filesystem::path& file, const char* setup, std::chrono::milliseconds lockPatience) {
  sqlite3* opened = nullptr;
  const int code = sqlite3_open_v2(reinterpret_cast<const char*>(file.u8string().c_str()), &opened,
                                   SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  handle.reset(opened);
  Check(code, opened);
  sqlite3_busy_timeout(opened, static_cast<int>(lockPatience.count()));
  sqlite3_limit(opened, SQLITE_LIMIT_LENGTH, kMaxValueBytes);
  RunScript("PRAGMA trusted_schema=OFF; PRAGMA foreign_keys=ON;");
  RunScript(setup);
}

Connection::~Connection() = default;

std::int64_t Connection::LastRowId() const {
  return sqlite3_last_insert_rowid(handle.get());
}

int Connection::ChangedRows() const {
  return sqlite3_changes(handle.get());
}

void Connection::RunScript(const char* script) {
  Check(sqlite3_exec(handle.get(), script, nullptr, nullptr, nullptr), handle.get());
}

sqlite3_stmt* Connection::Prepared(const char* sql) {
  const auto known = statements.find(std::string_view(sql));
  if (known != statements.end()) return known->second.get();
  sqlite3_stmt* statement = nullptr;
  Check(sqlite3_prepare_v3(handle.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr), handle.get());
  std::unique_ptr<sqlite3_stmt, Finalize> owner(statement);
  return statements.emplace(sql, std::move(owner)).first->second.get();
}

void Connection::Close::operator()(sqlite3* database) const {
  sqlite3_close_v2(database);
}

void Connection::Finalize::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

Transaction::Transaction(Connection& connection) : connection(connection) {
  connection.Run("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
  if (!open) return;
  try {
    connection.Run("ROLLBACK");
  } catch (const std::exception&) {
    // SQLite has rolled back by itself, as it does after the graver errors.
  }
}

void Transaction::Commit() {
  connection.Run("COMMIT");
  open = false;
}

}  // namespace reference::sqlite
