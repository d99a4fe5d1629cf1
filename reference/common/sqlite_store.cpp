#include "reference/common/sqlite_store.h"

#include <exception>
#include <fstream>
#include <system_error>

#include "base/base_log_interface.h"
#include "base/thread_id.h"
#include "reference/common/settings.h"

namespace reference::sqlite {
namespace {

constexpr int kInformationLevel = 20;
constexpr int kFailureLevel = 60;
constexpr std::chrono::minutes kPauseBetweenSameLines{1};

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
    bool isUsed = false, isNew = false;
    std::string failure;
    {
      const std::lock_guard<std::mutex> lock(connectionMutex);
      try {
        isNew = TryLocked(work);
        isUsed = true;
      } catch (const std::exception& thrown) {
        failure = thrown.what();
        // Whatever it was, the next use begins with a fresh connection.
        connection.reset();
        if (!IsToldLocked(failure)) return false;
      }
    }
    if (isNew) WriteLog(kInformationLevel, " was missing and has been made", "");
    if (!isUsed) WriteLog(kFailureLevel, " cannot be used: ", failure.c_str());
    return isUsed;
  } catch (const std::exception&) {
    // Out of memory: the operation has failed, and nobody can be told why.
  }
  return false;
}

void Store::WriteLog(int level, const char* what, const char* why) const {
  base::IBaseLogInterface::GetLogInstance()->WriteLog(level, base::GetTid(), "%s%s%s%s", tag, fileName, what, why);
}

bool Store::IsToldLocked(const std::string& failure) {
  const auto now = std::chrono::steady_clock::now();
  if (failure == toldFailure && wantedFile.native() == toldFile && now < tellAgain) return false;
  toldFailure = failure;
  toldFile = wantedFile.native();
  tellAgain = now + kPauseBetweenSameLines;
  return true;
}

bool Store::TryLocked(const std::function<void(Connection&)>& work) {
  wantedFile = DataDirectory() / fileName;
  try {
    const bool isNew = OpenLocked();
    work(*connection);
    // The line about a damaged file that was moved aside has said so already.
    return isNew && toldFile != wantedFile.native();
  } catch (const Error& failure) {
    if (!failure.IsCorrupt()) throw;
    connection.reset();
    MoveAside(wantedFile);
    throw std::runtime_error(std::string(failure.what()) + "; it is moved aside, the next use makes a new one");
  }
}

bool Store::OpenLocked() {
  const bool exists = std::filesystem::exists(wantedFile);
  if (connection && openFile == wantedFile.native() && exists) return false;
  connection.reset();
  std::filesystem::create_directories(wantedFile.parent_path());
  // Sessions and addresses are the user's own business. Made and closed to others before SQLite opens it, since the
  // files beside it take over its permissions. Where the file system knows no owner, it stays as it is.
  std::ofstream(wantedFile, std::ios::app).close();
  std::error_code ignored;
  std::filesystem::permissions(wantedFile, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write,
                               ignored);
  connection.emplace(wantedFile, setup, lockPatience);
  openFile = wantedFile.native();
  return !exists;
}

}  // namespace reference::sqlite
