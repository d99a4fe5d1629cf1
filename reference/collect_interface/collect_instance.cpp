#include <exception>

#include "reference/collect_interface/collector.h"
#include "reference/collect_interface/crash_record.h"
#include "reference/common/settings.h"

namespace collect_interface {

std::shared_ptr<ICollectInterface> ICollectInterface::GetCollectInstance(bool) {
  // Never destroyed, and made on demand: libraries register while they are loaded, and report while the process ends.
  static const auto* const instance = new std::shared_ptr<ICollectInterface>(std::make_shared<Collector>());
  try {
    // Here, because a crash handler cannot ask for it, and each time, because the host may set it later.
    SetCrashDirectory(reference::DataDirectory());
  } catch (const std::exception&) {
    // No such directory: crashes go unrecorded, and the store says why.
  }
  return *instance;
}

void ICollectInterface::CoreHappen(const char* text) {
  RecordCrash(text);
}

}  // namespace collect_interface
