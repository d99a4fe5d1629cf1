// The HTTP service on libcurl.
//
// Threads: every operation may be called from any thread, from inside a notice too. A request and a stop never wait for
// the network; a notice is delivered on the worker thread of the initialisation that its request belongs to.
// Ownership: see IPassInterface. The worker thread does not need this object, which may die inside a notice.
#ifndef REFERENCE_PASS_INTERFACE_PASS_SERVICE_H
#define REFERENCE_PASS_INTERFACE_PASS_SERVICE_H

#include <memory>
#include <mutex>

#include "pass_interface/pass_interface.h"

namespace pass_interface {

class RequestSession;

class PassService final : public IPassInterface {
 public:
  PassService() = default;
  ~PassService() override;
  PassService(const PassService&) = delete;
  PassService& operator=(const PassService&) = delete;

  // Ends what an earlier call began, as Stop does, once the new settings are accepted; a refused call changes nothing.
  // httpValue1: connect time-out, httpValue2: time-out of the whole request. For the results see pass_result.h.
  std::int32_t Initialise(const char* baseUrl, const char* credential1, const char* credential2,
                          const char* credential3, const char* version, std::shared_ptr<IPassInterfaceNotic> notic,
                          void* reserved, std::uint32_t httpValue1, std::uint32_t httpValue2, bool enabled) override;
  void Stop() override;
  void Reserved3() override {}
  std::int32_t RequestPhoneConnect(const char* targetId, const char* text1, const char* text2, void* reserved) override;
  std::int32_t RequestRefreshSession(const char* sessionId, const char* text, std::int32_t value) override;

 private:
  std::shared_ptr<RequestSession> Current();

  std::mutex currentMutex;
  // Guarded by currentMutex. Empty before the first Initialise; stays after Stop, so that a second Stop waits as well.
  std::shared_ptr<RequestSession> current;
};

}  // namespace pass_interface

#endif
