#include "bench/cloud_in_use.h"

#include <sqlite3.h>

#include <map>
#include <stdexcept>

#include "bench/data_directory.h"
#include "bench/services.h"
#include "reference/common/settings.h"

namespace bench {
namespace {

const CloudProcess& CloudWithDelay(int delayMs) {
  static std::map<int, CloudProcess> clouds;
  return clouds.try_emplace(delayMs, delayMs).first->second;
}

}  // namespace

CloudInUse::CloudInUse(int delayMs) : cloud(CloudWithDelay(delayMs)) {
  EmptyTheCache();
  reference::SetAuthorityFile(cloud.authorityFile);
  UseRealServices(true);
}

CloudInUse::~CloudInUse() {
  UseRealServices(false);
}

void EmptyTheCache() {
  sqlite3* database = nullptr;
  sqlite3_open((DataDirectory() / "session_cache.db").string().c_str(), &database);
  sqlite3_busy_timeout(database, 1000);
  // Before the first save there is no table.
  const int result =
      sqlite3_exec(database,
                   "CREATE TABLE IF NOT EXISTS session_cache (cache_key TEXT PRIMARY KEY, cipher_text TEXT NOT NULL, "
                   "expiry INTEGER NOT NULL) STRICT; DELETE FROM session_cache",
                   nullptr, nullptr, nullptr);
  sqlite3_close(database);
  if (result != SQLITE_OK) throw std::runtime_error("the session cache cannot be emptied");
}

}  // namespace bench
