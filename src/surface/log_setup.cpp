// SetLogParam: the logger's settings and the crash hook. Meant for one early call of the host's.
#include <algorithm>
#include <functional>
#include <string>

#include "base/base_log_interface.h"
#include "base/mini_jump.h"
#include "collect_interface/collect_interface.h"
#include "qv_data_interface/data_interface.h"

namespace qv_data_interface {
namespace {

// A text that lacks its NUL ends with its field.
template <std::size_t size>
std::string BoundedText(const char (&field)[size]) {
  return std::string(field, std::find(field, field + size, '\0'));
}

}  // namespace

void IQVDataInterface::SetLogParam(QvLogParam* param) {
  const QvLogParam defaults;
  const QvLogParam& chosen = param != nullptr ? *param : defaults;
  const std::string path = BoundedText(chosen.path);
  const std::string name = BoundedText(chosen.name);

  // The crash hook first, so that a crash in any of the rest leaves a dump.
  const std::function<void(const char*)> onDump = &collect_interface::ICollectInterface::CoreHappen;
  base::IMiniJump::GenerateMiniDump(path.c_str(), onDump);

  const int level = chosen.level;
  const int sizeSetting = chosen.sizeSetting;
  const int modeSetting = chosen.modeSetting;
  const int countSetting = chosen.countSetting;
  using base::IBaseLogInterface;
  IBaseLogInterface::GetLogInstance()->SetLogLevel(level);
  IBaseLogInterface::GetLogInstance()->SetLogPath(path.c_str());
  IBaseLogInterface::GetLogInstance()->SetLogName(name.c_str());
  IBaseLogInterface::GetLogInstance()->SetLogSizeSetting(sizeSetting);
  IBaseLogInterface::GetLogInstance()->SetLogModeSetting(modeSetting);
  IBaseLogInterface::GetLogInstance()->SetLogCountSetting(countSetting);
  IBaseLogInterface::GetLogInstance()->StartLog();
}

}  // namespace qv_data_interface
