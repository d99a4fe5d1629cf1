#include "reference/ws_interface/io_thread.h"

#include <openssl/crypto.h>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <condition_variable>
#include <optional>
#include <utility>
#include <vector>

#include "reference/common/guarded.h"
#include "reference/common/notice_gate.h"
#include "reference/common/service_threads.h"
#include "reference/ws_interface/beast_transport.h"
#include "reference/ws_interface/log.h"
#include "reference/ws_interface/tls.h"

namespace reference::ws {
namespace {

namespace asio = boost::asio;

// For what runs already on the thread, and for look-ups of names, which may hang while the network is down.
constexpr std::chrono::milliseconds kPatience{250};

using Clock = std::chrono::steady_clock;

}  // namespace

// What a waker is to do stands in the waker itself, and the thread looks through all of them. So neither a wake-up nor
// a deadline needs memory, which a task posted to asio or a timer of its does.
class IoThread::LoopWaker final : public Waker {
 public:
  LoopWaker(std::shared_ptr<Loop> loop, std::weak_ptr<WakerUser> user);
  ~LoopWaker() override;
  LoopWaker(const LoopWaker&) = delete;
  LoopWaker& operator=(const LoopWaker&) = delete;

  bool Wake() noexcept override;
  void WakeAfter(std::chrono::milliseconds delay) noexcept override;
  void Cancel() noexcept override;

 private:
  friend class Loop;

  const std::shared_ptr<Loop> loop;
  const std::weak_ptr<WakerUser> user;
  // Guarded by the loop's mutex.
  // From the first Wake on: until then the user may not have its waker in place yet.
  bool isInUse = false;
  bool isWoken = false;
  bool isAtFault = false;
  std::optional<Clock::time_point> deadline;
};

class IoThread::Loop {
 public:
  explicit Loop(std::shared_ptr<TlsTrust> trust) : trust(std::move(trust)) {
    // A timer has the context make its reactor. Before it has one, post() signals a condition variable with nothing
    // locked: a look-up's thread could do so when the context is gone already.
    asio::steady_timer unused(*context);
  }

  asio::io_context& Context() { return *context; }
  TlsTrust& Trust() { return *trust; }
  void Run();
  // Lets the thread end when all that was begun has ended.
  void LetEnd();
  bool WaitForEnd();

 private:
  friend class LoopWaker;

  using Call = void (WakerUser::*)();

  void RunOne();
  void TakeWakeUp();
  void ServeWakers();
  bool TakeNext(std::shared_ptr<WakerUser>& user, Call& call);
  bool GoesOn();
  void ReportFault();

  // Before the context, whose transports refer to it.
  const std::shared_ptr<TlsTrust> trust;
  std::mutex loopMutex;
  // Empty when the thread has ended. Replaced by the thread only.
  std::unique_ptr<asio::io_context> context = std::make_unique<asio::io_context>(1);
  // Keeps the thread waiting for work until it is told to stop; it then ends when all that was begun has ended.
  std::optional<asio::executor_work_guard<asio::io_context::executor_type>> work = asio::make_work_guard(*context);
  std::vector<LoopWaker*> wakers;
  bool isWoken = false;

  std::mutex endMutex;
  std::condition_variable endReached;
  bool ended = false;
};

IoThread::LoopWaker::LoopWaker(std::shared_ptr<Loop> loop, std::weak_ptr<WakerUser> user)
    : loop(std::move(loop)), user(std::move(user)) {
  const std::lock_guard<std::mutex> lock(this->loop->loopMutex);
  this->loop->wakers.push_back(this);
}

IoThread::LoopWaker::~LoopWaker() {
  const std::lock_guard<std::mutex> lock(loop->loopMutex);
  std::erase(loop->wakers, this);
}

bool IoThread::LoopWaker::Wake() noexcept {
  const std::lock_guard<std::mutex> lock(loop->loopMutex);
  if (loop->context == nullptr) return false;
  isInUse = isWoken = loop->isWoken = true;
  // What the thread waits for stays begun; it looks through the wakers and goes on.
  loop->context->stop();
  return true;
}

void IoThread::LoopWaker::WakeAfter(std::chrono::milliseconds delay) noexcept {
  const std::lock_guard<std::mutex> lock(loop->loopMutex);
  deadline = Clock::now() + delay;
}

void IoThread::LoopWaker::Cancel() noexcept {
  const std::lock_guard<std::mutex> lock(loop->loopMutex);
  deadline.reset();
}

void IoThread::Loop::Run() {
  trust->Prepare();
  do {
    if (!Guarded(kLogTag, "a task of the I/O thread", [this] { RunOne(); })) ReportFault();
    // Before, so that who wakes the thread from now on ends its next wait.
    TakeWakeUp();
    ServeWakers();
  } while (GoesOn());
  const std::lock_guard<std::mutex> lock(endMutex);
  ended = true;
  endReached.notify_all();
}

void IoThread::Loop::RunOne() {
  std::optional<Clock::time_point> earliest;
  {
    const std::lock_guard<std::mutex> lock(loopMutex);
    for (const LoopWaker* const waker : wakers) {
      if (waker->deadline && (!earliest || waker->deadline < earliest)) earliest = waker->deadline;
    }
  }
  if (earliest) {
    context->run_one_until(*earliest);
  } else {
    context->run_one();
  }
}

void IoThread::Loop::ReportFault() {
  const std::lock_guard<std::mutex> lock(loopMutex);
  for (LoopWaker* const waker : wakers) waker->isAtFault = waker->isInUse;
}

void IoThread::Loop::ServeWakers() {
  Call call = nullptr;
  // Holds the user during the call, and lets go of it with nothing locked.
  for (std::shared_ptr<WakerUser> user; TakeNext(user, call); user.reset()) {
    if (user && !Guarded(kLogTag, "a connection's turn", [&] { ((*user).*call)(); })) user->OnFault();
  }
}

bool IoThread::Loop::TakeNext(std::shared_ptr<WakerUser>& user, Call& call) {
  const std::lock_guard<std::mutex> lock(loopMutex);
  const Clock::time_point now = Clock::now();
  for (LoopWaker* const waker : wakers) {
    if (std::exchange(waker->isAtFault, false)) {
      call = &WakerUser::OnFault;
    } else if (std::exchange(waker->isWoken, false)) {
      call = &WakerUser::OnWoken;
    } else if (waker->deadline && *waker->deadline <= now) {
      waker->deadline.reset();
      call = &WakerUser::OnTime;
    } else {
      continue;
    }
    user = waker->user.lock();
    return true;
  }
  return false;
}

void IoThread::Loop::TakeWakeUp() {
  const std::lock_guard<std::mutex> lock(loopMutex);
  if (std::exchange(isWoken, false)) context->restart();
}

bool IoThread::Loop::GoesOn() {
  std::unique_ptr<asio::io_context> ending;
  const std::lock_guard<std::mutex> lock(loopMutex);
  if (isWoken || !context->stopped()) return true;
  ending.swap(context);
  return false;
}

void IoThread::Loop::LetEnd() {
  const std::lock_guard<std::mutex> lock(loopMutex);
  work.reset();
}

bool IoThread::Loop::WaitForEnd() {
  std::unique_lock<std::mutex> lock(endMutex);
  return endReached.wait_for(lock, kPatience, [this] { return ended; });
}

IoThread::IoThread(std::shared_ptr<TlsTrust> trust) : loop(std::make_shared<Loop>(std::move(trust))) {
  thread = std::thread([loop = loop, ticket = ServiceThreadTicket()]() mutable {
    loop->Run();
    // All of it before the ticket, which says that nothing of this thread is left; what OpenSSL keeps for the thread
    // would otherwise be freed after it.
    loop.reset();
    OPENSSL_thread_stop();
  });
}

IoThread::~IoThread() {
  Stop();
}

std::unique_ptr<Waker> IoThread::MakeWaker(std::weak_ptr<WakerUser> user) {
  return std::make_unique<LoopWaker>(loop, std::move(user));
}

std::shared_ptr<Transport> IoThread::MakeTransport(const Endpoint& endpoint, std::chrono::milliseconds keepAlive) {
  return MakeBeastTransport(loop->Context(), loop->Trust(), endpoint, keepAlive);
}

void IoThread::Stop() {
  std::thread ending;
  {
    const std::lock_guard<std::mutex> lock(threadMutex);
    ending.swap(thread);
  }
  if (!ending.joinable()) return;
  loop->LetEnd();
  if (ending.get_id() == std::this_thread::get_id() || NoticeScope::IsInside()) return ending.detach();
  if (loop->WaitForEnd()) return ending.join();
  ending.detach();
  LogInformation(
      "the I/O thread",
      "a name's look-up, a notice or the reading of the authorities is still under way; it ends by itself after that");
}

}  // namespace reference::ws
