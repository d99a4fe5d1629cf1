#include "tools/qv_cloud/state.h"

#include <utility>

namespace qv_cloud {

void Switches::Set(const Faults& newFaults) {
  const std::lock_guard<std::mutex> lock(mutex);
  faults = newFaults;
  errorTaken = false;
  dropTaken = false;
}

Faults Switches::Get() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return faults;
}

bool Switches::IsErrorArmed() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return faults.errorCode != 0 && !errorTaken;
}

bool Switches::TakeError() {
  const std::lock_guard<std::mutex> lock(mutex);
  return faults.errorCode != 0 && !std::exchange(errorTaken, true);
}

bool Switches::TakeDrop() {
  const std::lock_guard<std::mutex> lock(mutex);
  return faults.dropAfterFrames != 0 && !std::exchange(dropTaken, true);
}

Fault State::FaultAt(Service service, Step step) {
  const Faults faults = switches.Get();
  const bool isHttp = service == Service::http;
  Fault fault = Fault::none;
  if (step == (isHttp ? faults.httpCloseAt : faults.closeAt)) {
    fault = Fault::close;
  } else if (step == (isHttp ? faults.httpSilentAt : faults.silentAt)) {
    fault = Fault::silent;
  } else if (step == (isHttp ? faults.httpGarbageAt : faults.garbageAt)) {
    fault = Fault::garbage;
  }
  if (fault != Fault::none) observation.Change([](CloudStats& stats) { ++stats.faultsMet; });
  return fault;
}

void Observation::Change(const std::function<void(CloudStats&)>& change) {
  const std::lock_guard<std::mutex> lock(mutex);
  change(stats);
  changed.notify_all();
}

CloudStats Observation::Get() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return stats;
}

bool Observation::WaitUntil(const std::function<bool(const CloudStats&)>& condition,
                            std::chrono::milliseconds timeout) const {
  std::unique_lock<std::mutex> lock(mutex);
  return changed.wait_for(lock, timeout, [&] { return condition(stats); });
}

}  // namespace qv_cloud
