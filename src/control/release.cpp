// ReleasePhoneConnect: from ready to idle. Runs on the front end's thread, inside a notice on a service's thread, or in
// the destructor on whichever thread that runs; initState lets one call through.
#include <exception>

#include "control/data_control.h"
#include "surface/log.h"
#include "telemetry/clock.h"

namespace qv_data_interface {

void CQVDataControl::ReleasePhoneConnect() {
  // Letting go of the notice interface may drop the last pointer to this object. Empty inside the destructor.
  const auto self = weak_from_this().lock();
  std::uint32_t expected = kStateReady;
  if (!initState.compare_exchange_strong(expected, kStateReleasing)) return;
  // Closes the gate of the commands too: what has been requested belongs to the generation before.
  const Generation since = ++generation;

  // A step that throws (memory is short, a service fails) must not keep the others from letting go.
  std::exception_ptr failure;
  const auto attempt = [&failure](auto&& step) {
    try {
      step();
    } catch (...) {
      if (!failure) failure = std::current_exception();
    }
  };
  attempt([this] {
    status.FillIfMade([this](Status& data) {
      data.releaseTime = NowMs();
      firstFrameSeen = false;
    });
  });
  attempt([this] { SendMessageCollect(1, 4, 0, "", ""); });
  attempt([&] { DropConnection(since); });
  attempt([this] {
    if (const auto manager = wsManager.Take()) manager->Stop();
  });
  attempt([this] {
    if (const auto service = passInterface.Take()) service->Stop();
  });
  attempt([this] { notice.Replace(nullptr); });
  attempt([this] {
    const std::int32_t rowId = collectRowId.Take();
    const auto collector = collect_interface::ICollectInterface::GetCollectInstance(false);
    if (!collector || rowId <= 0) return;
    if (collector->DeleteInstanceInfo(rowId) == -1) QV_LOG(kLogError, "[QV_DATA_INTERFACE]DeleteInstanceInfo failed");
  });

  initState = kStateIdle;
  if (failure) std::rethrow_exception(failure);
}

}  // namespace qv_data_interface
