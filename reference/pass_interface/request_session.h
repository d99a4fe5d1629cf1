// What lies between one Initialise and its Stop: the settings, the worker thread while there is work, and the gate
// through which the notices leave.
//
// Threads: every operation may be called from any thread, from inside a notice too.
// Ownership: the notices hold the gate only, so this object may die inside one.
#ifndef REFERENCE_PASS_INTERFACE_REQUEST_SESSION_H
#define REFERENCE_PASS_INTERFACE_REQUEST_SESSION_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "pass_interface/pass_interface_notic.h"
#include "reference/common/notice_gate.h"
#include "reference/common/service_url.h"
#include "reference/pass_interface/http_worker.h"
#include "reference/pass_interface/request_body.h"

namespace pass_interface {

using reference::HttpSettings;
using reference::ServiceUrl;

class RequestSession {
 public:
  // Empty when libcurl cannot be used.
  static std::shared_ptr<RequestSession> Start(ServiceUrl url, Identity identity, HttpSettings settings,
                                               const std::shared_ptr<IPassInterfaceNotic>& sink);

  std::int32_t RequestPhoneConnect(const char* targetId, const char* text1, const char* text2);
  std::int32_t RequestRefreshSession(const char* sessionId, const char* text, std::int32_t value);
  // Drops the requests on their way without a notice; waits for a notice in flight unless called from inside one, of
  // any service. May be called again.
  void Stop();

 private:
  RequestSession(ServiceUrl url, Identity identity, HttpSettings settings,
                 const std::shared_ptr<IPassInterfaceNotic>& sink);
  template <class Call>
  std::int32_t Issue(std::string body);
  std::int32_t Submit(std::unique_ptr<HttpTransfer> transfer);

  const ServiceUrl url;
  const Identity identity;
  const HttpSettings settings;
  const std::shared_ptr<reference::NoticeGate<IPassInterfaceNotic>> gate;

  std::mutex workerMutex;
  // Guarded by workerMutex. Empty before the first request; replaced when it has run out of work, but not once stopped.
  std::unique_ptr<HttpWorker> worker;
  bool stopped = false;
};

}  // namespace pass_interface

#endif
