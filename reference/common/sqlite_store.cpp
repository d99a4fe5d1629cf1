#include "reference/common/sqlite_store.h"

#include <exception>
#include <fstream>
#include <system_error>

#include "base/base_log_interface.h"
#include "base/thread_id.h"
#include "reference/common/settings.h"

namespace reference::sqlite {
namespace {

constexpr int kFailureLevel = 60;

std::filesystem::path WithSuffix(std::filesystem::path file, const char* suffix) {
  return file += suffix;
}

void MoveAside(const std::filesystem::path& file) {
  std::error_code ignored;
  std::filesystem::rename(file, WithSuffix(file, ".corrupt"), ignored);
  // They belong to the file that is gone.
  std::filesystem::remove(WithSuffix(file, "-wal"), ignored);
  std::filesystem::remove(WithSuffix(file, "-shm"), ignored);
}

}  // namespace

bool Store::Use(const std::function<void(Connection&)>& work) noexcept {
  try {
    std::string failure;
    {
      const std::lock_guard<std::mutex> lock(connectionMutex);
      try {
        TryLocked(work);
        lastFailure.clear();
        return true;
      } catch (const std::exception& thrown) {
        failure = thrown.what();
      }
      // Whatever it was, the next use begins with a fresh connection.
      connection.reset();
      if (failure == lastFailure) return false;
      lastFailure = failure;
    }
    base::IBaseLogInterface::GetLogInstance()->WriteLog(kFailureLevel, base::GetTid(), "%s%s cannot be used: %s", tag,
                                                        fileName, failure.c_str());
  } catch (const std::exception&) {
    // Out of memory: the operation has failed, and nobody can be told why.
  }
  return false;
}

void Store::TryLocked(const std::function<void(Connection&)>& work) {
  const std::filesystem::path file = DataDirectory() / fileName;
  try {
    OpenLocked(file);
    work(*connection);
  } catch (const Error& failure) {
    if (!failure.IsCorrupt()) throw;
    connection.reset();
    MoveAside(file);
    throw std::runtime_error(std::string(failure.what()) + "; it is moved aside, the next use makes a new one");
  }
}

void Store::OpenLocked(const std::filesystem::path& file) {
  if (connection && openFile == file && std::filesystem::exists(file)) return;
  connection.reset();
  std::filesystem::create_directories(file.parent_path());
  // Sessions and addresses are the user's own business. Made and closed to others before SQLite opens it, since the files
  // beside it take over its permissions. Where the file system knows no owner, it stays as it is.
  std::ofstream(file, std::ios::app).close();
  std::error_code ignored;
  std::filesystem::permissions(file, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write, ignored);
  connection.emplace(file, setup, lockPatience);
  openFile = file;
}

}  // namespace reference::sqlite
