// The message template: the status of one connection as it gathers. What is sent is always a snapshot of it.
//
// Threads: every operation from any thread. The lock is never held across a call out of the library.
// Ownership: a snapshot shares nothing with the template.
#ifndef TELEMETRY_STATUS_TEMPLATE_H
#define TELEMETRY_STATUS_TEMPLATE_H

#include <memory>

#include "pass_interface/message_collect.h"
#include "sync/mutex.h"
#include "telemetry/record_shelf.h"

namespace qv_data_interface {

class StatusTemplate {
 public:
  using Message = pass_interface::MessageCollect;
  using Status = pass_interface::MessageCollectStatusData;

  // Runs fill(status) under the lock, unless there is no template yet; says whether it ran.
  // REQUIRES, here and below: fill calls nothing outside the library.
  template <class Fill>
  bool FillIfMade(Fill&& fill) QV_EXCLUDES(collectMutex) {
    const MutexLock lock(collectMutex);
    if (!messageCollect) return false;
    fill(*statusData);
    return true;
  }

  // Makes the template when it is missing, then runs fill(message, status) under the lock.
  template <class Fill>
  void MakeAndFill(Fill&& fill) QV_EXCLUDES(collectMutex) {
    const MutexLock lock(collectMutex);
    MakeLocked();
    fill(*messageCollect, *statusData);
  }

  // A message of its own with a copy of the status; empty when there is no template. detail and extra may be null.
  std::shared_ptr<Message> Snapshot(int collectType, int collectStatus, int errorCode, const char* detail,
                                    const char* extra) const QV_EXCLUDES(collectMutex);

 private:
  void MakeLocked() QV_REQUIRES(collectMutex);

  // Synchronises itself.
  mutable RecordShelf<Status> sentStatuses;

  mutable Mutex collectMutex;
  // Set once, never replaced. statusData is what messageCollect carries as its data.
  std::shared_ptr<Message> messageCollect QV_GUARDED_BY(collectMutex);
  std::shared_ptr<Status> statusData QV_GUARDED_BY(collectMutex);
};

}  // namespace qv_data_interface

#endif
