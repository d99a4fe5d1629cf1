#include "reference/pass_interface/request_session.h"

#include <atomic>
#include <utility>

#include "base/base_log_interface.h"
#include "base/thread_id.h"
#include "reference/common/guarded.h"
#include "reference/pass_interface/answer_parser.h"
#include "reference/pass_interface/pass_result.h"

namespace pass_interface {
namespace {

using reference::HttpAnswer;
using Gate = reference::NoticeGate<IPassInterfaceNotic>;

constexpr std::uint32_t kHttpOk = 200;

struct PhoneConnectCall {
  using Answer = InstanceInfo;
  static constexpr const char* kPath = "v1/phone-connect";
  static constexpr auto kParse = &ParsePhoneConnectAnswer;
  static constexpr auto kNotice = &IPassInterfaceNotic::OnPhoneConnectRsp;
};

struct RefreshSessionCall {
  using Answer = RefreshSessionRsp;
  static constexpr const char* kPath = "v1/refresh-session";
  static constexpr auto kParse = &ParseRefreshSessionAnswer;
  static constexpr auto kNotice = &IPassInterfaceNotic::OnRefreshSessionRsp;
};

// Names a request in the log, and its answer when the service did not.
std::string NextTag() {
  static std::atomic<std::uint64_t> counter{0};
  return "request-" + std::to_string(++counter);
}

void LogFailure(const char* path, const std::string& tag, const std::string& host, const HttpAnswer& http) {
  if (http.transportResult != 0) {
    base::IBaseLogInterface::GetLogInstance()->WriteLog(
        60, base::GetTid(), "[REFERENCE_PASS_INTERFACE]%s %s to %s failed with %d: %s", path, tag.c_str(), host.c_str(),
        http.transportResult, http.problem.c_str());
  } else if (http.status != kHttpOk) {
    base::IBaseLogInterface::GetLogInstance()->WriteLog(60, base::GetTid(),
                                                        "[REFERENCE_PASS_INTERFACE]%s %s: %s answered with status %u",
                                                        path, tag.c_str(), host.c_str(), http.status);
  }
}

// answer is empty still. It was made with the request, so that every request that went out has its notice.
template <class Call>
void Deliver(Gate& gate, const std::string& tag, const std::string& host, HttpAnswer http,
             std::shared_ptr<typename Call::Answer> answer) {
  // Stopped meanwhile; a failure that nobody hears of is not worth a line either.
  if (gate.IsClosed()) return;
  if (http.transportResult == 0 && http.status == kHttpOk && !Call::kParse(http.body, *answer, http.problem)) {
    http.transportResult = kMalformedAnswer;
  }
  reference::Guarded("[REFERENCE_PASS_INTERFACE]", "naming an answer", [&] {
    if (answer->requestTag.empty()) answer->requestTag = tag;
  });
  LogFailure(Call::kPath, tag, host, http);
  gate.Deliver(
      [&](IPassInterfaceNotic& sink) { (sink.*Call::kNotice)(http.transportResult, http.status, std::move(answer)); });
}

}  // namespace

std::shared_ptr<RequestSession> RequestSession::Start(ServiceUrl url, Identity identity, HttpSettings settings,
                                                      const std::shared_ptr<IPassInterfaceNotic>& sink) {
  if (!reference::PrepareLibcurl()) return nullptr;
  return std::shared_ptr<RequestSession>(
      new RequestSession(std::move(url), std::move(identity), std::move(settings), sink));
}

RequestSession::RequestSession(ServiceUrl url, Identity identity, HttpSettings settings,
                               const std::shared_ptr<IPassInterfaceNotic>& sink)
    : url(std::move(url)),
      identity(std::move(identity)),
      settings(std::move(settings)),
      gate(std::make_shared<Gate>(sink)) {}

std::int32_t RequestSession::RequestPhoneConnect(const char* targetId, const char* text1, const char* text2) {
  return Issue<PhoneConnectCall>(PhoneConnectBody(identity, targetId, text1, text2));
}

std::int32_t RequestSession::RequestRefreshSession(const char* sessionId, const char* text, std::int32_t value) {
  return Issue<RefreshSessionCall>(RefreshSessionBody(identity, sessionId, text, value));
}

template <class Call>
std::int32_t RequestSession::Issue(std::string body) {
  std::unique_ptr<HttpTransfer> transfer = HttpTransfer::Post(
      settings, url.Join(Call::kPath), std::move(body),
      [held = gate, tag = NextTag(), host = url.Host(), answer = std::make_shared<typename Call::Answer>()](
          HttpAnswer http) { Deliver<Call>(*held, tag, host, std::move(http), answer); });
  if (!transfer) return kNoResources;
  return Submit(std::move(transfer));
}

std::int32_t RequestSession::Submit(std::unique_ptr<HttpTransfer> transfer) {
  // Destroyed after the lock: that waits for the last steps of a thread.
  std::unique_ptr<HttpWorker> ended;
  const std::lock_guard<std::mutex> lock(workerMutex);
  if (stopped) return kStopped;
  if (worker) {
    const std::int32_t result = worker->Submit(transfer);
    if (result != kStopped) return result;
  }
  ended = std::exchange(worker, HttpWorker::Start(std::move(transfer)));
  return worker ? 0 : kNoResources;
}

void RequestSession::Stop() {
  HttpWorker* stopping = nullptr;
  {
    const std::lock_guard<std::mutex> lock(workerMutex);
    stopped = true;
    stopping = worker.get();
  }
  if (stopping != nullptr) stopping->RequestStop();
  gate->Close();
  if (stopping != nullptr) stopping->Join();
}

}  // namespace pass_interface
