#include "reference/pass_interface/pass_service.h"

#include <cstring>
#include <initializer_list>
#include <optional>
#include <utility>

#include "base/base_log_interface.h"
#include "base/thread_id.h"
#include "reference/common/path_text.h"
#include "reference/common/settings.h"
#include "reference/pass_interface/pass_result.h"
#include "reference/pass_interface/request_session.h"

namespace pass_interface {
namespace {

std::int32_t CheckTexts(std::initializer_list<const char*> texts) {
  for (const char* text : texts) {
    if (text == nullptr) return kNullArgument;
    if (std::strlen(text) > kMaximumTextBytes) return kTextTooLong;
  }
  return 0;
}

bool IsTimeOut(std::uint32_t milliseconds) {
  return milliseconds > 0 && milliseconds <= kMaximumTimeOutMs;
}

}  // namespace

std::shared_ptr<IPassInterface> IPassInterface::Create() {
  return std::make_shared<PassService>();
}

PassService::~PassService() {
  PassService::Stop();
}

std::int32_t PassService::Initialise(const char* baseUrl, const char* credential1, const char* credential2,
                                     const char* credential3, const char* version,
                                     std::shared_ptr<IPassInterfaceNotic> notic, void* /*reserved*/,
                                     std::uint32_t httpValue1, std::uint32_t httpValue2, bool /*enabled*/) {
  const std::int32_t refused = CheckTexts({baseUrl, credential1, credential2, credential3, version});
  if (refused != 0) return refused;
  if (!notic) return kNullArgument;
  if (!IsTimeOut(httpValue1) || !IsTimeOut(httpValue2)) {
    base::IBaseLogInterface::GetLogInstance()->WriteLog(
        60, base::GetTid(), "[REFERENCE_PASS_INTERFACE]time-outs of %u ms and %u ms refused, 1 to %u are allowed",
        httpValue1, httpValue2, kMaximumTimeOutMs);
    return kBadTimeOut;
  }
  std::optional<ServiceUrl> url = ServiceUrl::Parse(baseUrl);
  if (!url) {
    // The text is not shown: what makes it bad may be a password in it.
    base::IBaseLogInterface::GetLogInstance()->WriteLog(
        60, base::GetTid(), "[REFERENCE_PASS_INTERFACE]base URL refused, it must be http(s)://host[:port][/path]");
    return kBadBaseUrl;
  }

  HttpSettings settings{
      httpValue1, httpValue2, reference::Utf8Text(reference::AuthorityFile()), reference::Proxy(), {}};
  Identity identity{credential1, credential2, credential3, version};
  std::shared_ptr<RequestSession> next =
      RequestSession::Start(std::move(*url), std::move(identity), std::move(settings), notic);
  if (!next) return kNoResources;
  {
    const std::lock_guard<std::mutex> lock(currentMutex);
    next.swap(current);
  }
  if (next) next->Stop();
  return 0;
}

void PassService::Stop() {
  const std::shared_ptr<RequestSession> session = Current();
  if (session) session->Stop();
}

std::int32_t PassService::RequestPhoneConnect(const char* targetId, const char* text1, const char* text2,
                                              void* /*reserved*/) {
  const std::int32_t refused = CheckTexts({targetId, text1, text2});
  if (refused != 0) return refused;
  const std::shared_ptr<RequestSession> session = Current();
  return session ? session->RequestPhoneConnect(targetId, text1, text2) : kNotInitialised;
}

std::int32_t PassService::RequestRefreshSession(const char* sessionId, const char* text, std::int32_t value) {
  const std::int32_t refused = CheckTexts({sessionId, text});
  if (refused != 0) return refused;
  const std::shared_ptr<RequestSession> session = Current();
  return session ? session->RequestRefreshSession(sessionId, text, value) : kNotInitialised;
}

std::shared_ptr<RequestSession> PassService::Current() {
  const std::lock_guard<std::mutex> lock(currentMutex);
  return current;
}

}  // namespace pass_interface
