#include "reference/base/base_logger.h"

namespace base {

std::shared_ptr<IBaseLogInterface> IBaseLogInterface::GetLogInstance() {
  // Never destroyed: other libraries log from their static destructors, in an order that nobody controls.
  static const auto* const instance = new std::shared_ptr<IBaseLogInterface>(std::make_shared<BaseLogger>());
  return *instance;
}

}  // namespace base
