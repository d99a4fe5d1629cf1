#include "reference/ws_interface/io_thread.h"

#include <openssl/crypto.h>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <condition_variable>
#include <optional>
#include <utility>

#include "reference/common/guarded.h"
#include "reference/common/notice_gate.h"
#include "reference/common/service_threads.h"
#include "reference/ws_interface/beast_transport.h"
#include "reference/ws_interface/log.h"

namespace reference::ws {
namespace {

namespace asio = boost::asio;

// For what runs already on the thread, and for the resolver, which may hang while the network is down.
constexpr std::chrono::milliseconds kPatience{250};

class AsioTimer final : public Timer {
 public:
  explicit AsioTimer(asio::io_context& context) : timer(context), round(std::make_shared<unsigned>(0)) {}
  ~AsioTimer() override { ++*round; }
  AsioTimer(const AsioTimer&) = delete;
  AsioTimer& operator=(const AsioTimer&) = delete;

  void Start(std::chrono::milliseconds delay, std::function<void()> expired) override {
    Cancel();
    timer.expires_after(delay);
    timer.async_wait([expired = std::move(expired), current = round, mine = *round](boost::system::error_code) {
      if (*current == mine) expired();
    });
  }

  // An expiry that waits in the queue already can no longer be called back by asio; it finds that its round is over.
  void Cancel() override {
    ++*round;
    timer.cancel();
  }

 private:
  asio::steady_timer timer;
  const std::shared_ptr<unsigned> round;
};

}  // namespace

struct IoThread::Loop {
  // Empty when the thread has ended. Replaced by the thread only.
  std::mutex contextMutex;
  std::unique_ptr<asio::io_context> context = std::make_unique<asio::io_context>(1);
  // Keeps the thread waiting for work until it is told to stop; it then ends when all that was begun has ended.
  std::optional<asio::executor_work_guard<asio::io_context::executor_type>> work = asio::make_work_guard(*context);

  std::mutex endMutex;
  std::condition_variable endReached;
  bool ended = false;

  bool WaitForEnd() {
    std::unique_lock<std::mutex> lock(endMutex);
    return endReached.wait_for(lock, kPatience, [this] { return ended; });
  }

  void Run() {
    while (!Guarded(kLogTag, "a task of the I/O thread", [this] { context->run(); })) continue;
    std::unique_ptr<asio::io_context> ending;
    {
      const std::lock_guard<std::mutex> lock(contextMutex);
      ending.swap(context);
    }
    ending.reset();
    const std::lock_guard<std::mutex> lock(endMutex);
    ended = true;
    endReached.notify_all();
  }
};

IoThread::IoThread() : loop(std::make_shared<Loop>()) {
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

void IoThread::Post(std::function<void()> task) {
  const std::lock_guard<std::mutex> lock(loop->contextMutex);
  if (loop->context != nullptr) asio::post(*loop->context, std::move(task));
}

std::unique_ptr<Timer> IoThread::MakeTimer() {
  return std::make_unique<AsioTimer>(*loop->context);
}

std::shared_ptr<Transport> IoThread::MakeTransport(const Endpoint& endpoint, std::chrono::milliseconds keepAlive) {
  return MakeBeastTransport(*loop->context, endpoint, keepAlive);
}

void IoThread::Stop() {
  std::thread ending;
  {
    const std::lock_guard<std::mutex> lock(threadMutex);
    ending.swap(thread);
  }
  if (!ending.joinable()) return;
  {
    const std::lock_guard<std::mutex> lock(loop->contextMutex);
    loop->work.reset();
  }
  if (ending.get_id() == std::this_thread::get_id() || NoticeScope::IsInside()) return ending.detach();
  if (loop->WaitForEnd()) return ending.join();
  ending.detach();
  LogInformation("the I/O thread", "a name resolution is still under way; it ends by itself");
}

}  // namespace reference::ws
