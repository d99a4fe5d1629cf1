// A SQLite file in the data directory that a service keeps something in, and can do without.
//
// Opened at the first use, and anew when the data directory has changed or the file has been taken away. When it cannot
// be used, the operation that wanted it fails, and a log line names the reason: the same one once a minute at most, for
// what fails may alternate with what does not. A corrupt file is moved aside to a name ending in ".corrupt", where it
// replaces an earlier one, and the next use makes a new one.
//
// Threads: Use from any thread; one at a time is served. Ownership: holds the connection until it is destroyed.
#ifndef REFERENCE_COMMON_SQLITE_STORE_H
#define REFERENCE_COMMON_SQLITE_STORE_H

#include <chrono>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "reference/common/sqlite.h"

namespace reference::sqlite {

class Store {
 public:
  // tag: begins the log lines. setup and lockPatience: see Connection. The texts are literals.
  Store(const char* tag, const char* fileName, const char* setup, std::chrono::milliseconds lockPatience)
      : tag(tag), fileName(fileName), setup(setup), lockPatience(lockPatience) {}

  // Calls work with the open connection; false when there is none or work throws. Never throws.
  bool Use(const std::function<void(Connection&)>& work) noexcept;

 private:
  // Both say whether the file has been made.
  bool TryLocked(const std::function<void(Connection&)>& work);
  bool OpenLocked();
  bool IsToldLocked(const std::string& failure);
  void WriteLog(int level, const char* what, const char* why) const;

  const char* const tag;
  const char* const fileName;
  const char* const setup;
  const std::chrono::milliseconds lockPatience;

  std::mutex connectionMutex;
  std::filesystem::path wantedFile;
  std::filesystem::path::string_type openFile;
  std::optional<Connection> connection;
  std::filesystem::path::string_type toldFile;
  std::string toldFailure;
  std::chrono::steady_clock::time_point tellAgain;
};

}  // namespace reference::sqlite

#endif
