#include "reference/pass_interface/http_worker.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>
#include <vector>

#include "reference/common/guarded.h"
#include "reference/common/notice_gate.h"
#include "reference/common/service_threads.h"
#include "reference/pass_interface/pass_result.h"

namespace pass_interface {
namespace {

// libcurl waits shorter when one of its own time-outs comes first, and a wake-up ends any wait.
constexpr int kLongestWaitMs = 60000;

struct MultiDeleter {
  void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};

using Multi = std::unique_ptr<CURLM, MultiDeleter>;
using Transfers = std::vector<std::unique_ptr<HttpTransfer>>;

}  // namespace

class HttpWorker::Loop {
 public:
  Loop() : multi(curl_multi_init()) { active.reserve(kMaximumOutstandingRequests); }

  // Without a wake-up (no descriptors left for one) a request would wait for the time-out of the one before.
  bool IsUsable() const { return multi && curl_multi_wakeup(multi.get()) == CURLM_OK; }
  std::int32_t Submit(std::unique_ptr<HttpTransfer>& transfer);
  void Stop();
  // The thread's function.
  void Run() noexcept;

 private:
  bool TakeSubmitted(Transfers& taken);
  void StartSubmitted(Transfers& taken);
  void FinishCompleted();
  template <class Finish>
  void Leave(Finish finish);
  void Wait();

  // The only libcurl call that other threads make on it is the wake-up, under queueMutex. Empty when the thread is
  // done.
  Multi multi;
  // The thread's own. As many fit in as may be outstanding, so that taking one in cannot fail.
  Transfers active;

  std::mutex queueMutex;
  // Guarded by queueMutex.
  Transfers submitted;
  std::size_t outstanding = 0;
  // Told to, or out of work.
  bool stopping = false;
};

std::int32_t HttpWorker::Loop::Submit(std::unique_ptr<HttpTransfer>& transfer) {
  const std::lock_guard<std::mutex> lock(queueMutex);
  if (stopping) return kStopped;
  if (outstanding >= kMaximumOutstandingRequests) return kTooManyRequests;
  submitted.push_back(std::move(transfer));
  ++outstanding;
  curl_multi_wakeup(multi.get());
  return 0;
}

void HttpWorker::Loop::Stop() {
  const std::lock_guard<std::mutex> lock(queueMutex);
  stopping = true;
  if (multi) curl_multi_wakeup(multi.get());
}

void HttpWorker::Loop::Run() noexcept {
  Transfers taken;
  while (TakeSubmitted(taken)) {
    StartSubmitted(taken);
    int running = 0;
    curl_multi_perform(multi.get(), &running);
    FinishCompleted();
    if (!active.empty()) Wait();
  }
  active.clear();
  // With the connections that it keeps for further requests. Swapped out, for closing them takes its time.
  Multi ending;
  const std::lock_guard<std::mutex> lock(queueMutex);
  ending.swap(multi);
}

bool HttpWorker::Loop::TakeSubmitted(Transfers& taken) {
  const std::lock_guard<std::mutex> lock(queueMutex);
  taken.swap(submitted);
  if (taken.empty() && active.empty()) stopping = true;
  return !stopping;
}

void HttpWorker::Loop::StartSubmitted(Transfers& taken) {
  for (std::unique_ptr<HttpTransfer>& transfer : taken) {
    const CURLMcode result = transfer->Join(multi.get());
    if (result == CURLM_OK) {
      active.push_back(std::move(transfer));
    } else {
      Leave([&] { transfer->FinishUnstarted(result); });
    }
  }
  taken.clear();
}

void HttpWorker::Loop::FinishCompleted() {
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi.get(), &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    const CURLcode result = message->data.result;
    const HttpTransfer* finished = HttpTransfer::Of(message->easy_handle);
    const auto found = std::find_if(active.begin(), active.end(),
                                    [finished](const auto& candidate) { return candidate.get() == finished; });
    if (found == active.end()) continue;
    const std::unique_ptr<HttpTransfer> transfer = std::move(*found);
    active.erase(found);
    Leave([&] { transfer->Finish(result); });
  }
}

template <class Finish>
void HttpWorker::Loop::Leave(Finish finish) {
  {
    // Before the callback, which may want to issue the next request.
    const std::lock_guard<std::mutex> lock(queueMutex);
    --outstanding;
  }
  reference::Guarded("[REFERENCE_PASS_INTERFACE]", "the receiver of an answer", finish);
}

void HttpWorker::Loop::Wait() {
  if (curl_multi_poll(multi.get(), nullptr, 0, kLongestWaitMs, nullptr) == CURLM_OK) return;
  // Out of memory or descriptors, and nothing tells when there are some again. Without a pause the thread would spin.
  std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

std::unique_ptr<HttpWorker> HttpWorker::Start(std::unique_ptr<HttpTransfer> first) {
  auto loop = std::make_shared<Loop>();
  if (!loop->IsUsable() || loop->Submit(first) != 0) return nullptr;
  std::unique_ptr<HttpWorker> worker(new HttpWorker(loop));
  try {
    worker->thread = std::thread([loop = std::move(loop), ticket = reference::ServiceThreadTicket()]() mutable {
      loop->Run();
      // All of it before the ticket, which says that nothing of this thread is left; what OpenSSL keeps for the thread
      // would otherwise be freed after it.
      loop.reset();
      OPENSSL_thread_stop();
    });
  } catch (const std::system_error&) {
    return nullptr;
  }
  return worker;
}

HttpWorker::HttpWorker(std::shared_ptr<Loop> loop) : loop(std::move(loop)) {}

HttpWorker::~HttpWorker() {
  RequestStop();
  Join();
}

std::int32_t HttpWorker::Submit(std::unique_ptr<HttpTransfer>& transfer) {
  return loop->Submit(transfer);
}

void HttpWorker::RequestStop() {
  loop->Stop();
}

void HttpWorker::Join() {
  std::thread ending;
  {
    const std::lock_guard<std::mutex> lock(threadMutex);
    ending.swap(thread);
  }
  if (!ending.joinable()) return;
  if (ending.get_id() == std::this_thread::get_id() || reference::NoticeScope::IsInside()) {
    ending.detach();
  } else {
    ending.join();
  }
}

}  // namespace pass_interface
