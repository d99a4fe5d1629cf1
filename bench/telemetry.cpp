// The operations of the telemetry, with a collector that drops what it is given.
#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <mutex>

#include "bench/allocations.h"
#include "bench/phone.h"

namespace bench {
namespace {

using pass_interface::MessageCollect;
using pass_interface::MessageCollectStatusData;

constexpr const char* kMilestones[] = {"startGetInstanceInfo",
                                       "endGetInstanceInfo",
                                       "startConnect",
                                       "dnsParseSucc",
                                       "connectSucc",
                                       "startAuth",
                                       "onAuthR",
                                       "sendPlay",
                                       "onPlayR",
                                       "recvFirstFrame"};
constexpr const char* kKnown = "connectSucc";

// A controller whose status is as full as after a first frame.
qv_data_interface::CQVDataControl& Controller() {
  static Phone& phone = []() -> Phone& {
    static Phone connected;
    connected.ConnectSilently();
    for (const char* name : kMilestones) connected.controller->RecordMilestone(name, 1);
    return connected;
  }();
  return *phone.controller;
}

// The status that the controller's messages carry.
MessageCollectStatusData FullStatus() {
  MessageCollectStatusData status;
  status.sessionId = GrantedSession().sessionId;
  status.targetId = "phone-1";
  status.channel = "websocket";
  status.wsDomain = "ws.cloud.example";
  status.wsPort = "4002";
  status.sdkVersion = status.interfaceVersion = "1.13.0";
  for (const char* name : kMilestones) status.milestones[name] = 1;
  return status;
}

void FloorOfMilestone(benchmark::State& state) {
  std::mutex mutex;
  MessageCollectStatusData status = FullStatus();
  std::int64_t time = 0;
  const char* name = kKnown;
  for (auto _ : state) {
    benchmark::DoNotOptimize(name);
    const std::lock_guard<std::mutex> lock(mutex);
    status.milestones.find(name)->second = ++time;
  }
}

void Milestone(benchmark::State& state) {
  qv_data_interface::IQVInternalDataInterface& controller = Controller();
  std::int64_t time = 0;
  const char* name = kKnown;
  const std::uint64_t allocationsBefore = AllocationsOfThisThread();
  for (auto _ : state) {
    benchmark::DoNotOptimize(name);
    controller.RecordMilestone(name, ++time);
  }
  state.counters["allocations"] =
      static_cast<double>(AllocationsOfThisThread() - allocationsBefore) / static_cast<double>(state.iterations());
}

void FloorOfMessage(benchmark::State& state) {
  const MessageCollectStatusData status = FullStatus();
  for (auto _ : state) {
    auto message = std::make_shared<MessageCollect>();
    message->data = std::make_shared<MessageCollectStatusData>(status);
    benchmark::DoNotOptimize(message);
  }
}

void Message(benchmark::State& state) {
  qv_data_interface::IQVInternalDataInterface& controller = Controller();
  for (auto _ : state) controller.SendMessageCollect(1, 1, 0, "", "");
}

BENCHMARK(FloorOfMilestone)->Name("milestone/floor");
BENCHMARK(Milestone)->Name("milestone/known name");
BENCHMARK(FloorOfMessage)->Name("message/floor");
BENCHMARK(Message)->Name("message/send");

}  // namespace
}  // namespace bench
