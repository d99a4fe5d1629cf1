/// @file
/// The local database. Every operation may be called from any thread. The order of the operations is part of the binary
/// interface; one that no SDK library here calls keeps its place under a Reserved name.
#ifndef SDK_DATABASE_INTERFACE_DATABASE_INTERFACE_H
#define SDK_DATABASE_INTERFACE_DATABASE_INTERFACE_H

#include <cstdint>
#include <memory>
#include <string>

#include "database_interface/export.h"

/// The local database.
namespace database_interface {

/// The session cache among the tables of the local database.
class IDatabaseInterface {
 public:
  /// The one of the process. When it is empty, nothing is cached.
  SDK_DATABASE_INTERFACE_API static std::shared_ptr<IDatabaseInterface> GetDbInstance();

  /// Not used; keeps the places of the others.
  virtual void Reserved1() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved2() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved3() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved4() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved5() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved6() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved7() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved8() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved9() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved10() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved11() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved12() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved13() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved14() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved15() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved16() = 0;
  /// Stores the row of this key, replacing an earlier one. expiry: ms since 1970-01-01 UTC. 0 when stored, -1
  /// otherwise.
  virtual std::int32_t SaveSessionCache(const char* cacheKey, const char* cipherText, std::int64_t expiry) = 0;
  /// Finds the row of this key that is valid beyond minimumExpiry (ms since 1970-01-01 UTC). 1 or more: found, and
  /// cipherText is filled; otherwise cipherText is left alone.
  virtual std::int32_t LoadSessionCache(const char* cacheKey, std::int64_t minimumExpiry, std::string& cipherText) = 0;

  virtual ~IDatabaseInterface() = default;
};

}  // namespace database_interface

#endif
