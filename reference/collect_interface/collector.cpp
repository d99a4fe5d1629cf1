#include "reference/collect_interface/collector.h"

#include <chrono>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "reference/collect_interface/message_rows.h"
#include "reference/collect_interface/schema.h"
#include "reference/collect_interface/session_digest.h"
#include "reference/common/guarded.h"
#include "reference/common/settings.h"

namespace collect_interface {
namespace {

using reference::sqlite::Connection;
using reference::sqlite::Transaction;

// The end of a connection reports several times and must not take long; a row less is no loss to the user.
constexpr std::chrono::milliseconds kLockPatience{50};

int ResultOf(bool done) {
  return done ? 0 : -1;
}

}  // namespace

Collector::Collector() : store("[REFERENCE_COLLECT_INTERFACE]", kDatabaseFile, kSchema, kLockPatience) {}

void Collector::SetCollectSdkType(const char* newType) {
  if (newType == nullptr) return;
  std::string copy(newType);
  const std::lock_guard<std::mutex> lock(sdkTypeMutex);
  sdkType.swap(copy);
}

std::string Collector::SdkType() {
  const std::lock_guard<std::mutex> lock(sdkTypeMutex);
  return sdkType;
}

int Collector::DeleteInstanceInfo(int rowId) {
  bool found = false;
  store.Use([&](Connection& database) { found = database.Run("DELETE FROM instances WHERE id = ?1", rowId) > 0; });
  return ResultOf(found);
}

int Collector::InsertInstanceInfo(int* rowId, const char* targetId, const char* sessionId, int defaultMode,
                                  const char* channel) {
  if (rowId == nullptr || targetId == nullptr || sessionId == nullptr || channel == nullptr) return -1;
  const bool inserted = store.Use([&](Connection& database) {
    Transaction transaction(database);
    database.Run(
        "INSERT INTO instances (target_id, session, default_mode, channel, sdk_type) VALUES (?1, ?2, ?3, ?4, ?5)",
        Bounded(targetId), SessionDigest(sessionId), defaultMode, Bounded(channel), Bounded(SdkType()));
    const std::int64_t id = database.LastRowId();
    if (id > std::numeric_limits<int>::max()) throw std::length_error("no instance row number is left");
    database.Run("DELETE FROM instances WHERE id <= ?1", id - kMaxInstances);
    transaction.Commit();
    *rowId = static_cast<int>(id);
  });
  return ResultOf(inserted);
}

int Collector::UpdataInstanceSessionId(int rowId, const char* sessionId, int length) {
  if (sessionId == nullptr || length < 0) return -1;
  bool found = false;
  store.Use([&](Connection& database) {
    const std::string digest = SessionDigest(std::string_view(sessionId, static_cast<std::size_t>(length)));
    found = database.Run("UPDATE instances SET session = ?2 WHERE id = ?1", rowId, digest) > 0;
  });
  return ResultOf(found);
}

void Collector::ReportMessageCollect(std::shared_ptr<pass_interface::MessageCollect> message) {
  if (!message) return;
  store.Use([&](Connection& database) {
    Transaction transaction(database);
    InsertMessage(database, *message, SdkType());
    transaction.Commit();
  });
  reference::Guarded("[REFERENCE_COLLECT_INTERFACE]", "tracing a connection", [&] { Trace(*message); });
}

void Collector::Trace(const pass_interface::MessageCollect& message) {
  const bool isWanted = !reference::OtlpEndpoint().empty();
  const std::string type = SdkType();
  std::optional<ConnectionTrace> trace;
  {
    const std::lock_guard<std::mutex> lock(watchMutex);
    if (isWanted) {
      trace = watch.OnMessage(message, type);
    } else {
      watch = {};
    }
  }
  if (trace) exporter.Submit(std::move(*trace));
}

}  // namespace collect_interface
