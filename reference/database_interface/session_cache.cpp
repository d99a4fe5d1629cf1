#include "reference/database_interface/session_cache.h"

#include <chrono>

namespace database_interface {
namespace {

using reference::sqlite::Connection;
using reference::sqlite::Rows;
using reference::sqlite::Transaction;

// With WAL, NORMAL loses no row when the process dies; a power cut may take the last ones, and costs a request each. An
// empty file is worth no waiting for the disk, least of all in the first connection. The table has row ids, for with
// them a cipher text of usual length fits into its page.
constexpr char kSetup[] = R"(
  PRAGMA synchronous=OFF;
  PRAGMA journal_mode=WAL;
  CREATE TABLE IF NOT EXISTS session_cache (
    cache_key TEXT PRIMARY KEY,
    cipher_text TEXT NOT NULL,
    expiry INTEGER NOT NULL    -- ms since 1970-01-01 UTC
  ) STRICT;
  PRAGMA synchronous=NORMAL;
)";

// A row costs or saves one request, which takes about as long.
constexpr std::chrono::milliseconds kLockPatience{200};

std::int64_t NowMs() {
  using std::chrono::milliseconds;
  return std::chrono::duration_cast<milliseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

}  // namespace

SessionCache::SessionCache() : store("[REFERENCE_DATABASE_INTERFACE]", "session_cache.db", kSetup, kLockPatience) {}

std::int32_t SessionCache::SaveSessionCache(const char* cacheKey, const char* cipherText, std::int64_t expiry) {
  if (cacheKey == nullptr || cipherText == nullptr) return -1;
  const bool stored = store.Use([&](Connection& database) {
    Transaction transaction(database);
    database.Run("DELETE FROM session_cache WHERE expiry <= ?1", NowMs());
    // Changes a row in its place, where replacing it would write the index too.
    database.Run(
        "INSERT INTO session_cache (cache_key, cipher_text, expiry) VALUES (?1, ?2, ?3) ON CONFLICT (cache_key) DO "
        "UPDATE "
        "SET cipher_text = excluded.cipher_text, expiry = excluded.expiry",
        cacheKey, cipherText, expiry);
    transaction.Commit();
  });
  return stored ? 0 : -1;
}

std::int32_t SessionCache::LoadSessionCache(const char* cacheKey, std::int64_t minimumExpiry, std::string& cipherText) {
  if (cacheKey == nullptr) return 0;
  std::int32_t found = 0;
  store.Use([&](Connection& database) {
    const auto read = [&](Rows& rows) {
      if (!rows.Next()) return;
      cipherText = rows.Text(0);
      found = 1;
    };
    database.Query("SELECT cipher_text FROM session_cache WHERE cache_key = ?1 AND expiry > ?2", read, cacheKey,
                   minimumExpiry);
  });
  return found;
}

std::shared_ptr<IDatabaseInterface> IDatabaseInterface::GetDbInstance() {
  // Never destroyed: a service's thread may still save while the process ends. SQLite needs no farewell.
  static const auto* const instance = new std::shared_ptr<IDatabaseInterface>(std::make_shared<SessionCache>());
  return *instance;
}

}  // namespace database_interface
