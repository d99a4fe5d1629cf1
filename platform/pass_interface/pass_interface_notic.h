/// @file
/// The sink of the HTTP service's answers.
///
/// Threads: called on the service's own thread, one answer at a time. No lock of the service is held; every operation
/// of IPassInterface may be called from inside, stop included. When stop has returned no further notice begins, and
/// none is running unless stop was called from inside a notice of any service: two services that stop each other from
/// inside their notices would wait for ever. Ownership: an answer record is passed with every notice and belongs to the
/// receiver.
#ifndef SDK_PASS_INTERFACE_PASS_INTERFACE_NOTIC_H
#define SDK_PASS_INTERFACE_PASS_INTERFACE_NOTIC_H

#include <cstdint>
#include <memory>

#include "pass_interface/instance_info.h"

namespace pass_interface {

/// What a receiver of answers implements.
class IPassInterfaceNotic {
 public:
  /// transportResult: 0 when an HTTP answer came back, else the service's own reason; httpStatus: its status code.
  virtual void OnPhoneConnectRsp(std::int32_t transportResult, std::uint32_t httpStatus,
                                 std::shared_ptr<InstanceInfo> answer) = 0;
  /// As OnPhoneConnectRsp, for RequestRefreshSession.
  virtual void OnRefreshSessionRsp(std::int32_t transportResult, std::uint32_t httpStatus,
                                   std::shared_ptr<RefreshSessionRsp> answer) = 0;
  /// Of other requests, which this library does not make.
  virtual void OnServiceRsp3(std::shared_ptr<void> /*answer*/) {}
  /// Of other requests, which this library does not make.
  virtual void OnServiceRsp4(std::shared_ptr<void> /*answer*/) {}
  /// Of other requests, which this library does not make.
  virtual void OnServiceRsp5(std::shared_ptr<void> /*answer*/) {}
  /// Of other requests, which this library does not make.
  virtual void OnServiceRsp6(std::shared_ptr<void> /*answer*/) {}
  /// Of other requests, which this library does not make.
  virtual void OnServiceNotice7() {}
  /// Of other requests, which this library does not make.
  virtual void OnServiceRsp8(std::shared_ptr<void> /*answer*/) {}
  /// Of other requests, which this library does not make.
  virtual std::int32_t OnServiceNotice9() { return 0; }
  /// Of other requests, which this library does not make.
  virtual void OnServiceNotice10() {}
  /// Of other requests, which this library does not make.
  virtual void OnServiceRsp11(std::shared_ptr<void> /*answer*/) {}

  virtual ~IPassInterfaceNotic() = default;
};

}  // namespace pass_interface

#endif
