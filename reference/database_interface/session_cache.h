// The session cache: one row a key, with a cipher text and its expiry, in session_cache.db in the data directory. Key
// and text are opaque here. A row that was stored survives the death of the process.
//
// Threads: every operation from any thread. Ownership: holds its database until it is destroyed.
#ifndef REFERENCE_DATABASE_INTERFACE_SESSION_CACHE_H
#define REFERENCE_DATABASE_INTERFACE_SESSION_CACHE_H

#include "database_interface/database_interface.h"
#include "reference/common/sqlite_store.h"

namespace database_interface {

class SessionCache final : public IDatabaseInterface {
 public:
  SessionCache();

  // Rows past their time go with every save.
  std::int32_t SaveSessionCache(const char* cacheKey, const char* cipherText, std::int64_t expiry) override;
  std::int32_t LoadSessionCache(const char* cacheKey, std::int64_t minimumExpiry, std::string& cipherText) override;

  void Reserved1() override {}
  void Reserved2() override {}
  void Reserved3() override {}
  void Reserved4() override {}
  void Reserved5() override {}
  void Reserved6() override {}
  void Reserved7() override {}
  void Reserved8() override {}
  void Reserved9() override {}
  void Reserved10() override {}
  void Reserved11() override {}
  void Reserved12() override {}
  void Reserved13() override {}
  void Reserved14() override {}
  void Reserved15() override {}
  void Reserved16() override {}

 private:
  reference::sqlite::Store store;
};

}  // namespace database_interface

#endif
