#include "tests/library/sweep/story.h"

#include <memory>

#include "pass_interface/pass_interface_notic.h"

namespace sweep {
namespace {

using library_test::InstanceInfo;
using library_test::IWSInterfaceNotic;
using library_test::MakeInfo;
using pass_interface::IPassInterfaceNotic;
using pass_interface::RefreshSessionRsp;

constexpr std::uint32_t kSessionExpired = 60103013;

InstanceInfo Refusal() {
  auto info = MakeInfo();
  info.code = 4004;
  return info;
}

void Renew(IPassInterfaceNotic& sink, std::int32_t code) {
  auto renewed = std::make_shared<RefreshSessionRsp>();
  renewed->code = code;
  renewed->sessionId = "session-renewed";
  sink.OnRefreshSessionRsp(0, 200, renewed);
}

void EveryNotice(IWSInterfaceNotic& sink) {
  sink.OnConnectState(1);
  sink.OnConnectStep(5);
  sink.OnConnectStep(0);
  sink.OnConnectState(2);
  sink.OnAuthRsp(1, 2, 3, "264");
  sink.OnPlayRsp(1, 2, 3, 4, 5, 6, 7, 8, 9, 10);
  sink.OnFirstFrame(1, 2, 3, 4);
  sink.OnVideoParamRsp(0, 1, 30, 3, 400, 500);
  sink.OnNotice6("text");
  sink.OnErrorCode(123, "why");
  sink.OnErrorCode(60102029, "why");
  sink.OnConnectState(0);
}

template <class Call>
std::int32_t OnController(LibraryTest& test, Call&& call) {
  const auto controller = test.controller;
  return controller ? call(*controller) : -1;
}

template <class Call>
std::int32_t OnSink(Call&& call) {
  const auto sink = LibraryTest::PassSink();
  if (sink) call(*sink);
  return kSaysNothing;
}

std::int32_t ChangeLine(LibraryTest& test) {
  return OnController(test, [](auto& controller) { return controller.ChangeIsp(2); });
}

std::int32_t ReleaseAndInit(LibraryTest& test) {
  return OnController(test, [&test](auto& controller) {
    controller.ReleasePhoneConnect();
    return test.Init();
  });
}

std::int32_t Reconnect(LibraryTest& test) {
  if (ReleaseAndInit(test) != 0) return -1;
  test.Services().createWsFails = false;
  EXPECT_EQ(test.controller->GetPhoneConnect(), 0);
  test.Grant();
  return 0;
}

}  // namespace

const std::vector<Story>& Stories() {
  static const auto* const stories = new std::vector<Story>{
      {"init", [](auto&) {}, [](auto& t) { return OnController(t, [&t](auto&) { return t.Init(); }); }, 0, 6},
      {"connect with a miss", [](auto& t) { t.InitReady(); }, [](auto& t) { return t.controller->GetPhoneConnect(); },
       0, 5, true},
      {"connect with a hit",
       [](auto& t) {
         t.Connect();
         t.controller->ReleasePhoneConnect();
         t.InitReady();
       },
       [](auto& t) { return t.controller->GetPhoneConnect(); }, 0, 13, true},
      {"granted", [](auto& t) { t.Request(); }, [](auto& t) { return t.Grant(), kSaysNothing; }, kSaysNothing, 10},
      {"granted again", [](auto& t) { t.Connect(); },
       [](auto& t) { return t.Grant(MakeInfo("session-2")), kSaysNothing; }, kSaysNothing, 9},
      {"refused", [](auto& t) { t.Connect(); }, [](auto& t) { return t.Answer(0, 200, Refusal()), kSaysNothing; },
       kSaysNothing, 6},
      {"request failed", [](auto& t) { t.Request(); }, [](auto& t) { return t.Answer(1, 0, MakeInfo()), kSaysNothing; },
       kSaysNothing, 5},
      {"refresh", [](auto& t) { t.Connect(); },
       [](auto& t) {
         const auto ws = t.WsSink();
         const auto pass = t.PassSink();
         ws->OnErrorCode(kSessionExpired, "");
         Renew(*pass, 0);
         return kSaysNothing;
       },
       kSaysNothing, 2},
      {"refresh refused", [](auto& t) { t.Connect(); },
       [](auto&) { return OnSink([](auto& sink) { Renew(sink, 4004); }); }, kSaysNothing, 6},
      {"line switch", [](auto& t) { t.Connect(); }, [](auto& t) { return t.controller->ChangeIsp(1); }, 0, 4, true},
      {"line switch that fails",
       [](auto& t) {
         t.Connect();
         t.Services().createWsFails = true;
       },
       [](auto& t) { return t.controller->ChangeIsp(1); }, -1, 9, true},
      {"command", [](auto& t) { t.Connect(); }, [](auto& t) { return t.controller->SendInReq8("text"); }, 0, 1},
      {"every notice", [](auto& t) { t.Connect(); }, [](auto& t) { return EveryNotice(*t.WsSink()), kSaysNothing; },
       kSaysNothing, 38},
      {"release", [](auto& t) { t.Connect(); },
       [](auto& t) { return t.controller->ReleasePhoneConnect(), kSaysNothing; }, kSaysNothing, 7},
      {"destruction", [](auto& t) { t.Connect(); }, [](auto& t) { return t.controller.reset(), kSaysNothing; },
       kSaysNothing, 7},
  };
  return *stories;
}

const std::vector<Intruder>& Intruders() {
  static const auto* const intruders = new std::vector<Intruder>{
      {"release",
       [](auto& t) {
         return OnController(t, [](auto& controller) { return controller.ReleasePhoneConnect(), kSaysNothing; });
       },
       true},
      {"last pointer dropped", [](auto& t) { return t.controller.reset(), kSaysNothing; }},
      {"re-Init", ReleaseAndInit, true},
      {"reconnect", Reconnect, true},
      {"second connect",
       [](auto& t) { return OnController(t, [](auto& controller) { return controller.GetPhoneConnect(); }); }},
      {"ChangeIsp", ChangeLine},
      {"ChangeIsp in a notice",
       [](auto& t) {
         t.At("notice.OnNotice7", [&t] { ChangeLine(t); });
         return OnSink([](auto& sink) { dynamic_cast<IWSInterfaceNotic&>(sink).OnNotice5(); });
       }},
      {"forwarder",
       [](auto& t) { return OnController(t, [](auto& controller) { return controller.SendInReq8("text"); }); }},
      {"granted",
       [](auto&) {
         return OnSink([](auto& sink) { sink.OnPhoneConnectRsp(0, 200, std::make_shared<InstanceInfo>(MakeInfo())); });
       }},
      {"refused",
       [](auto&) {
         return OnSink([](auto& sink) { sink.OnPhoneConnectRsp(0, 200, std::make_shared<InstanceInfo>(Refusal())); });
       }},
      {"refreshed", [](auto&) { return OnSink([](auto& sink) { Renew(sink, 0); }); }},
      {"disconnected",
       [](auto&) { return OnSink([](auto& sink) { dynamic_cast<IWSInterfaceNotic&>(sink).OnConnectState(0); }); }},
  };
  return *intruders;
}

const Intruder& Failure() {
  static constexpr Intruder failure = {"failure", [](auto&) -> std::int32_t { throw ServiceFailure(); }};
  return failure;
}

void NotifyLate(LibraryTest& test) {
  EveryNotice(test.Notices());
  test.Notices().OnErrorCode(kSessionExpired, "");
  auto& pass = dynamic_cast<IPassInterfaceNotic&>(*test.controller);
  for (const auto& info : {MakeInfo("session-late"), Refusal()}) {
    pass.OnPhoneConnectRsp(0, 200, std::make_shared<InstanceInfo>(info));
    pass.OnPhoneConnectRsp(1, 0, std::make_shared<InstanceInfo>(info));
    Renew(pass, info.code);
  }
}

}  // namespace sweep
