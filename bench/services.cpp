#include "bench/services.h"

#include "collect_interface/collect_interface.h"
#include "reference/collect_interface/collector.h"
#include "reference/ws_interface/ws_manager.h"

namespace bench {
namespace {

bool usesReal = false;
Clock::time_point lastCreateWs;

class SilentConnection final : public ws_interface::IWSInterface {
 public:
  std::int32_t SetSessionId(const char*) override { return 0; }
  std::int32_t SendReq2(std::uint64_t value1, std::uint64_t value2) override {
    return static_cast<std::int32_t>(value1 ^ value2);
  }
  std::int32_t SendReq3(std::uint64_t, std::uint64_t, std::uint64_t, std::int32_t) override { return 0; }
  std::int32_t SendReq4(float, float, float, float, float, float, float, float) override { return 0; }
  std::int32_t SendReq5(std::int32_t, float, float, float) override { return 0; }
  std::int32_t SendReq6(const char*, const char*) override { return 0; }
  std::int32_t SendReq7(const char*) override { return 0; }
  std::int32_t SendReq8(const char*) override { return 0; }
  std::int32_t SendReq9(const char*, std::int32_t) override { return 0; }
  std::int32_t SendReq10(std::uint64_t, std::uint64_t) override { return 0; }
  std::int32_t SendReq11(std::uint64_t, std::uint64_t, std::uint64_t, std::int32_t) override { return 0; }
  std::int32_t SendMicParamReq(std::int32_t, std::int32_t, std::int32_t) override { return 0; }
  std::int32_t SendReq13(std::uint64_t, std::uint64_t) override { return 0; }
  std::int32_t SendCameraParamReq(std::int32_t, std::int32_t, std::int32_t, std::uint64_t, std::int32_t) override {
    return 0;
  }
  std::int32_t SendReq15(std::uint64_t, std::uint64_t) override { return 0; }
  std::int32_t SendReq16(std::uint64_t, std::uint64_t) override { return 0; }
  std::int32_t SendReq17(std::int32_t) override { return 0; }
  std::int32_t SendDummyReq() override { return 0; }
};

class SilentManager final : public ws_interface::IWSManagerInterface {
 public:
  std::int32_t Initialise(std::int32_t, std::uint32_t) override { return 0; }
  std::shared_ptr<ws_interface::IWSInterface> CreateWS(const char*, const char*, const ws_interface::WSConnectInfo*,
                                                       const ws_interface::WSVideoInfo*,
                                                       const ws_interface::WSDefaultParam*,
                                                       const ws_interface::WSSystemParam*,
                                                       std::shared_ptr<ws_interface::IWSInterfaceNotic>,
                                                       std::uint64_t) override {
    lastCreateWs = Clock::now();
    return MakeSilentConnection();
  }
  void DestroyWS(std::shared_ptr<ws_interface::IWSInterface>) override {}
  void Reserved4() override {}
  void Stop() override {}
};

class SilentCollector final : public collect_interface::ICollectInterface {
 public:
  void SetCollectSdkType(const char*) override {}
  int DeleteInstanceInfo(int) override { return 0; }
  int InsertInstanceInfo(int* rowId, const char*, const char*, int, const char*) override {
    *rowId = 1;
    return 0;
  }
  int UpdataInstanceSessionId(int, const char*, int) override { return 0; }
  void ReportMessageCollect(std::shared_ptr<pass_interface::MessageCollect>) override {}
};

}  // namespace

void UseRealServices(bool real) {
  usesReal = real;
}

Clock::time_point LastCreateWs() {
  return lastCreateWs;
}

std::shared_ptr<ws_interface::IWSInterface> MakeSilentConnection() {
  return std::make_shared<SilentConnection>();
}

}  // namespace bench

std::shared_ptr<ws_interface::IWSManagerInterface> ws_interface::IWSManagerInterface::Create() {
  if (bench::usesReal) return std::make_shared<reference::ws::WsManager>();
  return std::make_shared<bench::SilentManager>();
}

namespace collect_interface {

std::shared_ptr<ICollectInterface> ICollectInterface::GetCollectInstance(bool) {
  static const auto silent = std::make_shared<bench::SilentCollector>();
  static const auto real = std::make_shared<Collector>();
  if (bench::usesReal) return real;
  return silent;
}

void ICollectInterface::CoreHappen(const char*) {}

}  // namespace collect_interface
