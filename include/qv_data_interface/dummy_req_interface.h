/// @file
/// One more command, for front ends that need it: dynamic_pointer_cast an IQVDataInterface to this.
#ifndef QV_DATA_INTERFACE_DUMMY_REQ_INTERFACE_H
#define QV_DATA_INTERFACE_DUMMY_REQ_INTERFACE_H

#include <cstdint>

#include "qv_data_interface/data_interface.h"

namespace qv_data_interface {

/// The one command that IQVDataInterface lacks. Objects of both factories have it.
class QV_DATA_INTERFACE_API IQVDataDummyReqInterface : public virtual IQVDataInterface {
 public:
  /// A command without arguments; results and threads as for every command of IQVDataInterface.
  virtual std::int32_t SendDummyReq() = 0;

  /// See IQVDataInterface.
  ~IQVDataDummyReqInterface() override;

  /// For those who implement the interface; like the ones below it has no data to copy.
  ///@{
  IQVDataDummyReqInterface();
  IQVDataDummyReqInterface(const IQVDataDummyReqInterface& other);
  IQVDataDummyReqInterface(IQVDataDummyReqInterface&& other) noexcept;
  IQVDataDummyReqInterface& operator=(const IQVDataDummyReqInterface& other);
  IQVDataDummyReqInterface& operator=(IQVDataDummyReqInterface&& other) noexcept;
  ///@}
};

}  // namespace qv_data_interface

#endif
