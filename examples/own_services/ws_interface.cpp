// A phone in the process: it plays at once, and takes every command without doing anything.
#include "worker.h"
#include "ws_interface/ws_manager_interface.h"

namespace ws_interface {
namespace {

class Connection final : public IWSInterface {
 public:
  explicit Connection(std::weak_ptr<IWSInterfaceNotic> sink) {
    worker.Start([sink](Worker::Gate& gate) { Play(gate, sink); });
  }
  void Stop() { worker.Stop(); }

  std::int32_t SetSessionId(const char*) override { return 0; }
  std::int32_t SendReq2(std::uint64_t, std::uint64_t) override { return 0; }
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

 private:
  // The notices of a connection in their order, one after the other.
  static void Play(Worker::Gate& gate, const std::weak_ptr<IWSInterfaceNotic>& sink) {
    using Sink = IWSInterfaceNotic;
    const auto tell = [&](auto notice) { return gate.Tell(sink, notice); };
    tell([](Sink& s) { s.OnConnectState(1); }) && tell([](Sink& s) { s.OnConnectStep(5); }) &&
        tell([](Sink& s) { s.OnConnectStep(0); }) && tell([](Sink& s) { s.OnAuthRsp(0, 0, 0, "264,265"); }) &&
        tell([](Sink& s) { s.OnConnectState(2); }) &&
        tell([](Sink& s) { s.OnPlayRsp(0, 0, 264, 720, 1280, 30, 2048, 0, 0, 0); }) &&
        tell([](Sink& s) { s.OnFirstFrame(0, 0, 0, 264); });
  }

  Worker worker;
};

class Manager final : public IWSManagerInterface {
 public:
  std::int32_t Initialise(std::int32_t, std::uint32_t) override { return 0; }
  std::shared_ptr<IWSInterface> CreateWS(const char*, const char*, const WSConnectInfo*, const WSVideoInfo*,
                                         const WSDefaultParam*, const WSSystemParam*,
                                         std::shared_ptr<IWSInterfaceNotic> notic, std::uint64_t) override {
    return std::make_shared<Connection>(notic);
  }
  void DestroyWS(std::shared_ptr<IWSInterface> connection) override {
    std::static_pointer_cast<Connection>(connection)->Stop();
  }
  void Reserved4() override {}
  // The library destroys its connection before it stops the manager, so there is nothing left to end.
  void Stop() override {}
};

}  // namespace

std::shared_ptr<IWSManagerInterface> IWSManagerInterface::Create() {
  return std::make_shared<Manager>();
}

}  // namespace ws_interface
