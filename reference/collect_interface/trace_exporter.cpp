#include "reference/collect_interface/trace_exporter.h"

#include <json/reader.h>
#include <json/value.h>
#include <openssl/crypto.h>

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "base/base_log_interface.h"
#include "base/thread_id.h"
#include "reference/collect_interface/trace_json.h"
#include "reference/collect_interface/trace_target.h"
#include "reference/common/guarded.h"
#include "reference/common/http_result.h"
#include "reference/common/http_transfer.h"
#include "reference/common/service_threads.h"

namespace collect_interface {
namespace {

using reference::HttpAnswer;
using reference::HttpTransfer;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr char kTag[] = "[REFERENCE_COLLECT_INTERFACE]";
constexpr std::chrono::minutes kBetweenLines{1};
constexpr milliseconds kLeastFlush{200};
// Between the end of the last attempt and that of the thread.
constexpr milliseconds kTimeToEnd{50};

struct MultiDeleter {
  void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};

void WriteLog(const std::string& text) {
  base::IBaseLogInterface::GetLogInstance()->WriteLog(60, base::GetTid(), "%s%s", kTag, text.c_str());
}

bool IsDelivered(const HttpAnswer& answer) {
  // It was taken over; what is said to that is too long to be of interest.
  if (answer.transportResult == reference::kAnswerTooLong) return true;
  return answer.transportResult == 0 && answer.status / 100 == 2;
}

bool MayPass(const HttpAnswer& answer) {
  if (answer.transportResult != 0) return true;
  return answer.status == 429 || answer.status == 502 || answer.status == 503 || answer.status == 504;
}

std::string ProblemOf(const HttpAnswer& answer) {
  if (answer.transportResult == 0) return "status " + std::to_string(answer.status);
  return answer.problem.empty() ? "failure " + std::to_string(answer.transportResult) : answer.problem;
}

// How many spans the collector has refused, though it took the request.
std::int64_t RefusedSpans(const std::string& body) {
  Json::Value root;
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  if (!reader->parse(body.data(), body.data() + body.size(), &root, nullptr) || !root.isObject()) return 0;
  const Json::Value& partial = root["partialSuccess"];
  if (!partial.isObject()) return 0;
  const Json::Value& count = partial["rejectedSpans"];
  if (count.isInt64()) return count.asInt64();
  // The way of 64-bit numbers in this JSON.
  return count.isString() ? std::strtoll(count.asCString(), nullptr, 10) : 0;
}

}  // namespace

class TraceExporter::Loop : public std::enable_shared_from_this<TraceExporter::Loop> {
 public:
  explicit Loop(const TraceBounds& bounds) : bounds(bounds) { batch.reserve(kMaxBatch); }

  void Submit(ConnectionTrace trace);
  void Hurry(steady_clock::time_point end);
  std::uint64_t Dropped() const;

 private:
  // Lets Hurry interrupt the wait of a multi handle.
  class Waker {
   public:
    Waker(Loop& loop, CURLM* multi) : loop(loop) { Set(multi); }
    ~Waker() { Set(nullptr); }
    Waker(const Waker&) = delete;
    Waker& operator=(const Waker&) = delete;

   private:
    void Set(CURLM* multi) {
      const std::lock_guard<std::mutex> lock(loop.queueMutex);
      loop.waker = multi;
    }

    Loop& loop;
  };

  void StartLocked();
  // The thread's function.
  void Run() noexcept;
  bool Take();
  void Send();
  std::optional<HttpAnswer> Post(const TraceTarget& target, const std::string& body);
  bool WaitFor(const HttpAnswer& answer, int attempt);
  // Shorter when the thread is hurried.
  void Pause(milliseconds length);
  void CountDrops(std::size_t count, const char* why) noexcept;
  void Tell(const std::string& problem, bool isDrop);
  // Until the thread has to end; at most that long.
  milliseconds Left(milliseconds longest) const;
  bool IsHurried() const;

  const TraceBounds bounds;
  // The thread's own. As many fit in as are taken at a time, so that taking them cannot fail.
  std::vector<ConnectionTrace> batch;

  mutable std::mutex queueMutex;
  std::condition_variable hurried;
  // Guarded by queueMutex.
  std::deque<ConnectionTrace> queue;
  bool isRunning = false;
  std::optional<steady_clock::time_point> endBy;
  CURLM* waker = nullptr;
  std::uint64_t dropped = 0;

  std::mutex toldMutex;
  // Guarded by toldMutex.
  std::optional<steady_clock::time_point> toldAt;
  std::uint64_t droppedTold = 0;
};

void TraceExporter::Loop::Submit(ConnectionTrace trace) {
  const std::lock_guard<std::mutex> lock(queueMutex);
  if (queue.size() >= kMaxQueued) {
    // The thread is at work, and tells of it.
    ++dropped;
    return;
  }
  queue.push_back(std::move(trace));
  if (!isRunning) StartLocked();
}

void TraceExporter::Loop::StartLocked() {
  try {
    std::thread([self = shared_from_this(),
                 ticket = reference::ServiceThreadTicket([self = weak_from_this()](auto end) {
                   if (const auto loop = self.lock()) loop->Hurry(end);
                 })]() mutable {
      self->Run();
      // All of it before the ticket, which says that nothing of this thread is left.
      self.reset();
      OPENSSL_thread_stop();
    }).detach();
    isRunning = true;
  } catch (...) {
    // The next one may fare better.
    dropped += queue.size();
    queue.clear();
    throw;
  }
}

void TraceExporter::Loop::Hurry(steady_clock::time_point end) {
  const std::lock_guard<std::mutex> lock(queueMutex);
  if (!isRunning || endBy) return;
  const auto now = steady_clock::now();
  // Even who has no patience leaves time for one attempt.
  endBy = std::clamp(end - kTimeToEnd, now + std::min(kLeastFlush, bounds.flush), now + bounds.flush);
  if (waker != nullptr) curl_multi_wakeup(waker);
  hurried.notify_all();
}

std::uint64_t TraceExporter::Loop::Dropped() const {
  const std::lock_guard<std::mutex> lock(queueMutex);
  return dropped;
}

void TraceExporter::Loop::CountDrops(std::size_t count, const char* why) noexcept {
  {
    const std::lock_guard<std::mutex> lock(queueMutex);
    dropped += count;
  }
  reference::Guarded(kTag, "telling of a drop", [&] { Tell(why, true); });
}

void TraceExporter::Loop::Run() noexcept {
  while (Take()) {
    if (!reference::Guarded(kTag, "sending traces", [&] { Send(); })) CountDrops(batch.size(), "see above");
    batch.clear();
  }
  // Of what Submit has dropped meanwhile.
  CountDrops(0, "the queue was full");
}

bool TraceExporter::Loop::Take() {
  const std::lock_guard<std::mutex> lock(queueMutex);
  while (!queue.empty() && batch.size() < kMaxBatch) {
    batch.push_back(std::move(queue.front()));
    queue.pop_front();
  }
  if (!batch.empty()) return true;
  isRunning = false;
  endBy.reset();
  return false;
}

void TraceExporter::Loop::Send() {
  const TraceTarget target = CurrentTraceTarget();
  if (target.url.empty()) return CountDrops(batch.size(), target.problem.c_str());
  const std::string body = TraceJson(batch);
  std::string problem = "the process ends";
  for (int attempt = 1; attempt <= bounds.attempts; ++attempt) {
    const std::optional<HttpAnswer> answer = Post(target, body);
    if (!answer) break;
    if (IsDelivered(*answer)) {
      std::int64_t refused = 0;
      reference::Guarded(kTag, "reading an answer", [&] { refused = RefusedSpans(answer->body); });
      if (refused > 0) Tell(target.host + " has refused " + std::to_string(refused) + " spans", false);
      return;
    }
    problem = target.host + ": " + ProblemOf(*answer);
    if (!MayPass(*answer) || attempt == bounds.attempts || !WaitFor(*answer, attempt)) break;
  }
  CountDrops(batch.size(), problem.c_str());
}

std::optional<HttpAnswer> TraceExporter::Loop::Post(const TraceTarget& target, const std::string& body) {
  std::optional<HttpAnswer> answer;
  reference::HttpSettings settings = target.settings;
  settings.connectTimeOutMs = bounds.connectTimeOutMs;
  settings.requestTimeOutMs = bounds.requestTimeOutMs;
  if (!reference::PrepareLibcurl()) throw std::runtime_error("libcurl cannot be used");
  const std::unique_ptr<CURLM, MultiDeleter> multi(curl_multi_init());
  const std::unique_ptr<HttpTransfer> transfer =
      HttpTransfer::Post(settings, target.url, body, [&answer](HttpAnswer given) { answer = std::move(given); });
  // A handle that cannot be woken would not hear that the thread is hurried.
  if (!multi || curl_multi_wakeup(multi.get()) != CURLM_OK || !transfer || transfer->Join(multi.get()) != CURLM_OK) {
    throw std::runtime_error("libcurl has no handle");
  }
  const Waker interruptible(*this, multi.get());
  while (!answer && Left(bounds.flush).count() > 0) {
    int running = 0;
    const CURLMcode performed = curl_multi_perform(multi.get(), &running);
    if (performed != CURLM_OK) throw std::runtime_error(curl_multi_strerror(performed));
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi.get(), &left)) {
      if (message->msg == CURLMSG_DONE) transfer->Finish(message->data.result);
    }
    // A wake-up ends it, and libcurl's own time-outs do.
    const milliseconds longest{bounds.requestTimeOutMs};
    const int atMost = static_cast<int>(Left(longest).count());
    // Out of memory or descriptors, which comes back at once.
    if (!answer && curl_multi_poll(multi.get(), nullptr, 0, atMost, nullptr) != CURLM_OK) Pause(milliseconds(10));
  }
  return answer;
}

// Says whether there is to be another attempt. One that is hurried comes at once, and is the last.
bool TraceExporter::Loop::WaitFor(const HttpAnswer& answer, int attempt) {
  if (IsHurried()) return false;
  milliseconds pause = std::min(bounds.firstPause * (1 << std::min(attempt - 1, 16)), bounds.longestPause);
  pause -= milliseconds(std::random_device()() % static_cast<unsigned>(pause.count() / 2 + 1));
  const std::chrono::seconds asked(std::clamp<std::int64_t>(answer.retryAfterSeconds, 0, 86400));
  if (asked > bounds.longestPause) return false;
  Pause(std::max<milliseconds>(pause, asked));
  return true;
}

void TraceExporter::Loop::Pause(milliseconds length) {
  std::unique_lock<std::mutex> lock(queueMutex);
  hurried.wait_for(lock, length, [this] { return endBy.has_value(); });
}

void TraceExporter::Loop::Tell(const std::string& problem, bool isDrop) {
  const std::uint64_t all = Dropped();
  std::string text;
  {
    const std::lock_guard<std::mutex> lock(toldMutex);
    const auto now = steady_clock::now();
    if ((isDrop && all == droppedTold) || (toldAt && now - *toldAt < kBetweenLines)) return;
    toldAt = now;
    if (isDrop) text = std::to_string(all - std::exchange(droppedTold, all)) + " connections are not traced; ";
  }
  WriteLog(text + problem);
}

milliseconds TraceExporter::Loop::Left(milliseconds longest) const {
  const std::lock_guard<std::mutex> lock(queueMutex);
  if (!endBy) return longest;
  const auto left = std::chrono::ceil<milliseconds>(*endBy - steady_clock::now());
  return std::clamp(left, milliseconds(0), longest);
}

bool TraceExporter::Loop::IsHurried() const {
  const std::lock_guard<std::mutex> lock(queueMutex);
  return endBy.has_value();
}

TraceExporter::TraceExporter(const TraceBounds& bounds) : loop(std::make_shared<Loop>(bounds)) {}

TraceExporter::~TraceExporter() {
  Stop();
}

void TraceExporter::Submit(ConnectionTrace trace) noexcept {
  reference::Guarded(kTag, "queueing a trace", [&] { loop->Submit(std::move(trace)); });
}

void TraceExporter::Stop() {
  loop->Hurry(steady_clock::now());
}

std::uint64_t TraceExporter::Dropped() const {
  return loop->Dropped();
}

}  // namespace collect_interface
