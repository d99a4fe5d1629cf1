// The fixture of the library's tests: one controller on recorded fakes, and verbs for what a front end and the services
// do with it.
#ifndef TESTS_LIBRARY_LIBRARY_TEST_H
#define TESTS_LIBRARY_LIBRARY_TEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "pass_interface/instance_info.h"
#include "qv_data_interface/qv_data_interface.h"
#include "tests/library/fakes/front_end.h"
#include "tests/library/fakes/recorder.h"
#include "tests/library/fakes/services.h"

namespace library_test {

using Calls = std::vector<std::string>;
using pass_interface::InstanceInfo;
using Status = pass_interface::MessageCollectStatusData;
using qv_data_interface::IQVDataInterface;
using qv_data_interface::IQVInternalDataInterface;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::StartsWith;
using ws_interface::IWSInterfaceNotic;

inline std::int64_t Now() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

// A granted session with a default line and two carrier lines. Like most texts here, what a string holds elsewhere than
// in place, so that a copy of it needs memory.
inline InstanceInfo MakeInfo(const std::string& sessionId = "a-long-session-1") {
  InstanceInfo info;
  info.requestTag = "a-long-request-tag";
  info.code = 0;
  info.sessionId = sessionId;
  info.sessionSignExpireTime = 9000000000000;
  info.endpoints = {"", 0, "", 0, "default.cloud.example", 8443};
  info.subStreamInfoList = {{1, "one of two carriers", {"", 0, "", 0, "line-1.cloud.example", 81}},
                            {2, "two of two carriers", {"", 0, "", 0, "line-2.cloud.example", 82}}};
  return info;
}

struct LibraryTest : testing::Test {
  LibraryTest() { StartOver(); }

  // Everything as at the beginning, for the next case of a table.
  void StartOver() {
    controller.reset();
    fakes::Recorder::Get().Reset();
    fakes::ResetServices();
    NewController();
    Take();
  }
  void NewController() { controller = IQVDataInterface::Create(); }

  Calls Take() { return fakes::Recorder::Get().Take(); }
  void At(const std::string& call, std::function<void()> action) { fakes::Recorder::Get().At(call, std::move(action)); }
  static fakes::Services& Services() { return fakes::State(); }

  std::int32_t Init() {
    return controller->Init(credential1, credential2, credential3, targetId, modeFlag, frontEnd, videoParam,
                            systemParam, reconnectNumber, baseUrl);
  }
  void InitReady() {
    ASSERT_EQ(Init(), 0);
    Take();
  }
  // A connect that asks the service.
  void ConnectMiss() {
    ASSERT_EQ(controller->GetPhoneConnect(), 0);
    Take();
  }
  void Answer(std::int32_t transportResult, std::uint32_t httpStatus, const InstanceInfo& info) {
    PassSink()->OnPhoneConnectRsp(transportResult, httpStatus, std::make_shared<InstanceInfo>(info));
  }
  void Grant(const InstanceInfo& info = MakeInfo()) { Answer(0, 200, info); }
  // Up to the point where the service's answer is due.
  void Request() {
    InitReady();
    ConnectMiss();
  }
  void Connect(const InstanceInfo& info = MakeInfo()) {
    Request();
    Grant(info);
    Take();
  }
  // A release after which nothing is cached either.
  void ReleaseAndForget() {
    controller->ReleasePhoneConnect();
    Services().sessionCache.clear();
    Take();
  }
  bool CommandsAreOpen() { return controller->SendInReq17(1) == 0; }

  static std::shared_ptr<pass_interface::IPassInterfaceNotic> PassSink() { return Services().passSink.lock(); }
  static const fakes::CreatedConnection& LastConnection() { return Services().connections.back(); }
  IQVInternalDataInterface& Internal() { return dynamic_cast<IQVInternalDataInterface&>(*controller); }
  // The controller itself as a sink; works before Init and after a release, too.
  IWSInterfaceNotic& Notices() { return dynamic_cast<IWSInterfaceNotic&>(*controller); }

  const char* credential1 = "a-long-credential-1";
  const char* credential2 = "a-long-credential-2";
  const char* credential3 = "a-long-credential-3";
  const char* targetId = "a-long-phone-name-1";
  std::int32_t modeFlag = 0;
  std::shared_ptr<fakes::FrontEnd> frontEnd = std::make_shared<fakes::FrontEnd>();
  qv_data_interface::QvVideoParam video;
  qv_data_interface::QvDataSystemParam system;
  const qv_data_interface::QvVideoParam* videoParam = &video;
  const qv_data_interface::QvDataSystemParam* systemParam = &system;
  std::int32_t reconnectNumber = 9;
  const char* baseUrl = "https://cloud.example";

  std::shared_ptr<IQVDataInterface> controller;
};

}  // namespace library_test

#endif
