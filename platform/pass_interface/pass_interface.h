/// @file
/// The HTTP service: asks the cloud for the connection data of an instance and renews sessions.
///
/// Threads: every operation may be called from any thread, from inside a notice too.
/// Ownership: texts are copied during the call; the sink is held weakly between notices.
#ifndef SDK_PASS_INTERFACE_PASS_INTERFACE_H
#define SDK_PASS_INTERFACE_PASS_INTERFACE_H

#include <cstdint>
#include <memory>

#include "pass_interface/export.h"
#include "pass_interface/pass_interface_notic.h"

namespace pass_interface {

/// The HTTP service of one connection. Each answer is delivered once; after Stop none is.
class IPassInterface {
 public:
  /// A new, independent service. When it is empty, Init fails.
  SDK_PASS_INTERFACE_API static std::shared_ptr<IPassInterface> Create();

  /// httpValue1 and httpValue2 are in ms. reserved and enabled are handed on as they are. Returns 0, or a reason of the
  /// service's own. May be called again on the same object.
  virtual std::int32_t Initialise(const char* baseUrl, const char* credential1, const char* credential2,
                                  const char* credential3, const char* version,
                                  std::shared_ptr<IPassInterfaceNotic> notic, void* reserved, std::uint32_t httpValue1,
                                  std::uint32_t httpValue2, bool enabled) = 0;
  /// Ends every request. Waits for a notice in flight, unless called from inside a notice of any service: two services
  /// that stop each other from inside their notices would wait for ever. Afterwards no notice begins.
  virtual void Stop() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved3() = 0;
  /// 0: issued, OnPhoneConnectRsp follows; otherwise nothing follows.
  virtual std::int32_t RequestPhoneConnect(const char* targetId, const char* text1, const char* text2,
                                           void* reserved) = 0;
  /// 0: issued, OnRefreshSessionRsp follows; otherwise nothing follows.
  virtual std::int32_t RequestRefreshSession(const char* sessionId, const char* text, std::int32_t value) = 0;

  virtual ~IPassInterface() = default;
};

}  // namespace pass_interface

#endif
