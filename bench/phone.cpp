#include "bench/phone.h"

#include <pthread.h>

#include <chrono>
#include <stdexcept>

#include "bench/data_directory.h"

namespace bench {
namespace {

constexpr std::chrono::seconds kPatience{60};

void Require(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(what);
}

}  // namespace

pass_interface::InstanceInfo GrantedSession() {
  constexpr std::int64_t kFarAway = 9'000'000'000'000;
  pass_interface::InstanceInfo info;
  info.requestTag = "request-1";
  info.code = 0;
  info.sessionId = "0123456789abcdef0123456789abcdef";
  info.instanceNo = "instance-1";
  info.userId = "user-1";
  info.appPackage = "com.example.app";
  info.sessionSignExpireTime = kFarAway;
  info.sessionExpireTime = kFarAway;
  info.endpoints = {"tcp.cloud.example", 4000, "udp.cloud.example", 4001, "ws.cloud.example", 4002};
  info.subStreamInfoList = {
      {1, "Line A", info.endpoints}, {2, "Line B", info.endpoints}, {3, "Line C", info.endpoints}};
  info.streamStrategyList = {1, 2};
  info.gCtrlNodeNo = "node-1";
  return info;
}

void FrontEnd::OnStatus(std::int32_t code, const char* message) {
  if (code == 0) return;
  const std::lock_guard<std::mutex> lock(mutex);
  lastFailure = message;
}

std::int32_t FrontEnd::OnChooseVideoFormat(const std::int32_t* formats, std::uint64_t) {
  return formats[0];
}

void FrontEnd::OnFirstFrame(std::uint64_t, std::uint64_t, std::uint64_t, std::uint32_t) {
  const std::lock_guard<std::mutex> lock(mutex);
  firstFrame = Clock::now();
  pthread_getcpuclockid(pthread_self(), &noticeThread);
  hasFrame = true;
  changed.notify_all();
}

void FrontEnd::OnIspList(const qv_data_interface::IspItem*, std::uint64_t) {
  lastIspList = Clock::now();
}

std::int32_t FrontEnd::OnNotice8(const char*) {
  const std::lock_guard<std::mutex> lock(mutex);
  hasEcho = true;
  changed.notify_all();
  return 0;
}

void FrontEnd::Await(bool& come, const char* what) {
  std::unique_lock<std::mutex> lock(mutex);
  if (!changed.wait_for(lock, kPatience, [&come] { return come; })) {
    throw std::runtime_error(std::string(what) + " did not come; the last failure reported: " + lastFailure);
  }
  come = false;
}

Clock::time_point FrontEnd::AwaitFirstFrame() {
  Await(hasFrame, "a first frame");
  return firstFrame;
}

void FrontEnd::AwaitEcho() {
  Await(hasEcho, "an echo");
}

Phone::Phone(std::string baseUrl, std::string target) : baseUrl(std::move(baseUrl)), target(std::move(target)) {
  DataDirectory();
}

Phone::~Phone() {
  Release();
}

void Phone::BePatient() {
  system.wsManagerValue = system.httpValue1 = 30000;
  system.httpValue2 = 60000;
}

void Phone::Init() {
  qv_data_interface::QvVideoParam video;
  // Of the stream only the first frame.
  video.frameRate = 0;
  Require(controller->Init("user", "device", "token", target.c_str(), 0, frontEnd, &video, &system, 1,
                           baseUrl.c_str()) == 0,
          "Init is refused");
}

void Phone::GetPhoneConnect() {
  Require(controller->GetPhoneConnect() == 0, "GetPhoneConnect is refused");
}

void Phone::Grant(const std::shared_ptr<pass_interface::InstanceInfo>& session) {
  static_cast<pass_interface::IPassInterfaceNotic&>(*controller).OnPhoneConnectRsp(0, 200, session);
}

void Phone::ConnectSilently() {
  Init();
  Grant(std::make_shared<pass_interface::InstanceInfo>(GrantedSession()));
  GetPhoneConnect();
}

void Phone::ConnectToFirstFrame() {
  Init();
  GetPhoneConnect();
  frontEnd->AwaitFirstFrame();
}

}  // namespace bench
