// What the reference services need of SQLite: a connection that keeps its prepared statements, rows, transactions.
//
// Failures are exceptions with SQLite's own words; Store (sqlite_store.h) is where they end.
// Threads: none of its own; a connection and what came from it are used by one thread at a time.
// Ownership: a connection outlives its rows and transactions. Texts are copied in and out.
#ifndef REFERENCE_COMMON_SQLITE_H
#define REFERENCE_COMMON_SQLITE_H

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace reference::sqlite {

class Error : public std::runtime_error {
 public:
  Error(int code, const std::string& text) : std::runtime_error(text), code(code) {}

  // The file is damaged, or is no database at all.
  bool IsCorrupt() const;

 private:
  int code;
};

// A statement while it runs. Values are bound from 1, columns count from 0.
class Rows {
 public:
  explicit Rows(sqlite3_stmt* statement) : statement(statement) {}
  ~Rows();
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;

  void Bind(int index, std::int64_t value);
  void Bind(int index, std::string_view value);

  // Goes on to the next row; false after the last one.
  bool Next();
  std::string Text(int column) const;

 private:
  sqlite3_stmt* const statement;
};

class Connection {
 public:
  // Opens or makes the file, then runs setup: how it is written (journal_mode, synchronous) and the CREATE statements.
  // Each operation waits at most that long for a lock of another process.
  Connection(const std::filesystem::path& file, const char* setup, std::chrono::milliseconds lockPatience = {});
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // The values are bound to ?1, ?2 and so on. The text is prepared once, so it must be one of few.
  template <class Work, class... Values>
  void Query(const char* sql, Work&& work, const Values&... values) {
    Rows rows(Prepared(sql));
    int index = 0;
    (rows.Bind(++index, values), ...);
    work(rows);
  }

  // Says how many rows were changed.
  template <class... Values>
  int Run(const char* sql, const Values&... values) {
    Query(
        sql,
        [](Rows& rows) {
          while (rows.Next()) continue;
        },
        values...);
    return ChangedRows();
  }

  std::int64_t LastRowId() const;

 private:
  struct Close {
    void operator()(sqlite3* handle) const;
  };
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const;
  };

  void RunScript(const char* script);
  sqlite3_stmt* Prepared(const char* sql);
  int ChangedRows() const;

  std::unique_ptr<sqlite3, Close> handle;
  std::map<std::string, std::unique_ptr<sqlite3_stmt, Finalize>, std::less<>> statements;
};

// What is run between begin and Commit is done as a whole, or not at all.
class Transaction {
 public:
  explicit Transaction(Connection& connection);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void Commit();

 private:
  Connection& connection;
  bool open = true;
};

}  // namespace reference::sqlite

#endif
