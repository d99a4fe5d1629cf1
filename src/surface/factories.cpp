// The two factories. Called on any thread.
#include <mutex>

#include "control/data_control.h"
#include "qv_data_interface/qv_data_interface.h"
#include "surface/log.h"
#include "surface/version.h"

namespace qv_data_interface {

namespace {

// Writes the line and keeps what a logger may throw to itself: an exception that leaves std::call_once can block every
// later caller, and a lost line is no reason to refuse an object.
template <class Write>
void WriteOnce(std::once_flag& written, Write&& write) {
  std::call_once(written, [&write] {
    try {
      write();
    } catch (...) {
      return;
    }
  });
}

}  // namespace

std::shared_ptr<IQVDataInterface> IQVDataInterface::Create() {
  static std::once_flag written;
  WriteOnce(written, [] { QV_LOG(kLogInfo, "[QV_DATA_INTERFACE]QV Data Interface Version[%s]", kVersion); });
  return std::make_shared<CQVDataControl>(false);
}

std::shared_ptr<IQVInternalDataInterface> IQVInternalDataInterface::CreateInternalDataInterface() {
  static std::once_flag written;
  WriteOnce(written, [] { QV_LOG(kLogInfo, "[QV_DATA_INTERFACE]QV In Data Interface Version[%s]", kVersion); });
  return std::make_shared<CQVDataControl>(true);
}

}  // namespace qv_data_interface
