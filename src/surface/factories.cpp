// The two factories. Called on any thread.
#include <mutex>

#include "control/data_control.h"
#include "qv_data_interface/qv_data_interface.h"
#include "surface/log.h"
#include "surface/version.h"

namespace qv_data_interface {

// A logger that throws ends the process here: an exception that leaves std::call_once can block later callers for ever.

std::shared_ptr<IQVDataInterface> IQVDataInterface::Create() {
  static std::once_flag versionLogged;
  std::call_once(versionLogged,
                 []() noexcept { QV_LOG(kLogInfo, "[QV_DATA_INTERFACE]QV Data Interface Version[%s]", kVersion); });
  return std::make_shared<CQVDataControl>(false);
}

std::shared_ptr<IQVInternalDataInterface> IQVInternalDataInterface::CreateInternalDataInterface() {
  static std::once_flag versionLogged;
  std::call_once(versionLogged,
                 []() noexcept { QV_LOG(kLogInfo, "[QV_DATA_INTERFACE]QV In Data Interface Version[%s]", kVersion); });
  return std::make_shared<CQVDataControl>(true);
}

}  // namespace qv_data_interface
