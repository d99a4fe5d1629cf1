#include "reference/ws_interface/io_thread.h"

#include <openssl/crypto.h>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <condition_variable>
#include <exception>
#include <utility>

#include "reference/common/notice_gate.h"
#include "reference/common/service_threads.h"
#include "reference/ws_interface/beast_transport.h"
#include "reference/ws_interface/log.h"

namespace reference::ws {
namespace {

namespace asio = boost::asio;

// For what runs already on the thread, and then for the resolver, which may hang while the network is down.
constexpr std::chrono::milliseconds kLoopPatience{1000};
constexpr std::chrono::milliseconds kResolverPatience{100};

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

void RunUntilStopped(asio::io_context& context) {
  const auto work = asio::make_work_guard(context);
  for (;;) {
    try {
      context.run();
      return;
    } catch (const std::exception& exception) {
      LogFailure(std::string("the I/O thread goes on after an exception: ") + Printable(exception.what()));
    }
  }
}

}  // namespace

struct IoThread::Loop {
  // Set until the thread ends; the thread owns it.
  std::mutex contextMutex;
  asio::io_context* context = nullptr;

  enum class Stage { kRunning, kLeft, kEnded };
  std::mutex stageMutex;
  std::condition_variable stageChanged;
  Stage stage = Stage::kRunning;

  void Reach(Stage reached) {
    const std::lock_guard<std::mutex> lock(stageMutex);
    stage = reached;
    stageChanged.notify_all();
  }

  // Whether the thread can be joined without waiting for the network.
  bool WaitForEnd() {
    std::unique_lock<std::mutex> lock(stageMutex);
    stageChanged.wait_for(lock, kLoopPatience, [this] { return stage != Stage::kRunning; });
    return stageChanged.wait_for(lock, kResolverPatience, [this] { return stage == Stage::kEnded; });
  }

  static void Run(const std::shared_ptr<Loop>& loop, std::unique_ptr<asio::io_context> owned) {
    RunUntilStopped(*owned);
    {
      const std::lock_guard<std::mutex> lock(loop->contextMutex);
      loop->context = nullptr;
    }
    loop->Reach(Stage::kLeft);
    // Joins asio's resolver thread, so this may take as long as the system's resolver.
    owned.reset();
    loop->Reach(Stage::kEnded);
  }
};

IoThread::IoThread() : loop(std::make_shared<Loop>()) {
  auto context = std::make_unique<asio::io_context>(1);
  loop->context = context.get();
  thread = std::thread([loop = loop, context = std::move(context), ticket = ServiceThreadTicket()]() mutable {
    Loop::Run(loop, std::move(context));
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
  Post([loop = loop] { loop->context->stop(); });
  if (ending.get_id() == std::this_thread::get_id() || NoticeScope::IsInside()) return ending.detach();
  if (loop->WaitForEnd()) {
    ending.join();
  } else {
    LogInformation("a name resolution is still under way; its thread ends by itself");
    ending.detach();
  }
}

}  // namespace reference::ws
