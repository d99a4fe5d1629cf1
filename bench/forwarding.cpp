// A command from the front end's call to the connection object, which does nothing with it.
#include <benchmark/benchmark.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "bench/allocations.h"
#include "bench/phone.h"

namespace bench {
namespace {

// What keeps an object alive during a call, and nothing else.
class PlainHolder {
 public:
  std::shared_ptr<ws_interface::IWSInterface> Copy() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return connection;
  }

 private:
  mutable std::mutex mutex;
  std::shared_ptr<ws_interface::IWSInterface> connection = MakeSilentConnection();
};

qv_data_interface::IQVDataInterface& ConnectedController() {
  static Phone& phone = []() -> Phone& {
    static Phone connected;
    connected.ConnectSilently();
    return connected;
  }();
  return *phone.controller;
}

// Moves the connection to the other line a thousand times a second.
class Swapper {
 public:
  Swapper() : thread([this] { Run(); }) {}
  ~Swapper() {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      stopping = true;
    }
    stopped.notify_all();
    thread.join();
  }
  Swapper(const Swapper&) = delete;
  Swapper& operator=(const Swapper&) = delete;

 private:
  void Run() {
    auto& controller = ConnectedController();
    auto next = Clock::now();
    std::unique_lock<std::mutex> lock(mutex);
    for (std::uint32_t line = 1; !stopping; line = 3 - line) {
      next += std::chrono::milliseconds(1);
      if (stopped.wait_until(lock, next, [this] { return stopping; })) return;
      controller.ChangeIsp(line);
    }
  }

  std::mutex mutex;
  std::condition_variable stopped;
  bool stopping = false;
  std::thread thread;
};

void FloorOfForwarding(benchmark::State& state) {
  static const PlainHolder holder;
  for (auto _ : state) {
    const auto connection = holder.Copy();
    benchmark::DoNotOptimize(connection->SendReq2(1, 2));
  }
}

void Forward(benchmark::State& state) {
  auto& controller = ConnectedController();
  const std::uint64_t allocationsBefore = AllocationsOfThisThread();
  for (auto _ : state) benchmark::DoNotOptimize(controller.SendInReq4(1, 2));
  state.counters["allocations"] =
      static_cast<double>(AllocationsOfThisThread() - allocationsBefore) / static_cast<double>(state.iterations());
}

void ForwardDuringSwaps(benchmark::State& state) {
  const Swapper swapper;
  Forward(state);
}

BENCHMARK(FloorOfForwarding)->Name("forward/floor");
BENCHMARK(Forward)->Name("forward/1 thread");
BENCHMARK(Forward)->Name("forward/2 threads")->Threads(2);
BENCHMARK(ForwardDuringSwaps)->Name("forward/swaps");

}  // namespace
}  // namespace bench
