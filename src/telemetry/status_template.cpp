#include "telemetry/status_template.h"

#include <string>

#include "telemetry/clock.h"

namespace qv_data_interface {
namespace {

const char* TextOrEmpty(const char* text) {
  return text != nullptr ? text : "";
}

}  // namespace

void StatusTemplate::MakeLocked() {
  if (messageCollect) return;
  auto message = std::make_shared<Message>();
  statusData = std::make_shared<Status>();
  message->data = statusData;
  messageCollect = std::move(message);
}

std::shared_ptr<StatusTemplate::Message> StatusTemplate::Snapshot(int collectType, int collectStatus, int errorCode,
                                                                  const char* detail, const char* extra) const {
  auto message = std::make_shared<Message>();
  std::shared_ptr<Status> status = sentStatuses.TakeOne();
  {
    const MutexLock lock(collectMutex);
    if (!messageCollect) return nullptr;
    message->defaultMode = messageCollect->defaultMode;
    message->tag = messageCollect->tag;
    *status = *statusData;
  }
  status->errorCode = errorCode != 0 ? std::to_string(errorCode) : std::string();
  status->detailText = TextOrEmpty(detail);
  status->extraText = TextOrEmpty(extra);
  message->collectType = collectType;
  message->collectStatus = collectStatus;
  message->timestamp = NowMs();
  message->data = std::move(status);
  return message;
}

}  // namespace qv_data_interface
