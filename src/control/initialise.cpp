// Init: from idle to ready. Runs on the front end's thread; initState lets one call through at a time.
#include "control/data_control.h"
#include "session/session_cipher.h"
#include "surface/host_process.h"
#include "surface/log.h"
#include "surface/version.h"

namespace qv_data_interface {
namespace {

// Used when the front end names no service: one on this machine.
constexpr char kDefaultBaseUrl[] = "https://localhost:8443";

// The WebSocket manager's first argument; its meaning is the manager's.
constexpr std::int32_t kWsManagerNumber = 10;

bool IsEmpty(const char* text) {
  return text == nullptr || *text == '\0';
}

bool IsWithin(std::uint32_t value, std::uint32_t least, std::uint32_t most) {
  return least <= value && value <= most;
}

bool IsValid(const QvVideoParam& param) {
  if (!IsWithin(param.width, 100, 4096) || !IsWithin(param.height, 100, 4096) || param.frameRate > 60) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE]video param is illegal");
    return false;
  }
  if (param.videoFormat != QV_VIDEO_FORMAT_H264 && param.videoFormat != QV_VIDEO_FORMAT_H265) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE]video format only support QV_VIDEO_FORMAT_H264/QV_VIDEO_FORMAT_H265");
    return false;
  }
  return true;
}

bool IsValid(const QvDataSystemParam& param) {
  if (IsWithin(param.wsManagerValue, 1000, 30000) && IsWithin(param.httpValue1, 1000, 30000) &&
      IsWithin(param.httpValue2, 1000, 60000) &&
      (!param.wsOptionEnabled || IsWithin(param.wsOptionInterval, 1000, 60000))) {
    return true;
  }
  QV_LOG(kLogError, "[QV_DATA_INTERFACE]system param is illegal");
  return false;
}

// Brings the state from initialising to ready or back to idle, also when an exception ends Init.
class StateOutcome {
 public:
  explicit StateOutcome(std::atomic<std::uint32_t>& initState) : initState(initState) {}
  ~StateOutcome() { initState = ready ? kStateReady : kStateIdle; }
  StateOutcome(const StateOutcome&) = delete;
  StateOutcome& operator=(const StateOutcome&) = delete;

  bool ready = false;

 private:
  std::atomic<std::uint32_t>& initState;
};

}  // namespace

std::int32_t CQVDataControl::Init(const char* credential1, const char* credential2, const char* credential3,
                                  const char* targetId, std::int32_t modeFlag,
                                  std::shared_ptr<IQVDataInterfaceNotic> notice, const QvVideoParam* videoParam,
                                  const QvDataSystemParam* systemParam, std::int32_t reconnectNumber,
                                  const char* baseUrl) {
  if (IsEmpty(credential1) || IsEmpty(credential2) || IsEmpty(credential3) || IsEmpty(targetId)) return -1;
  if (videoParam == nullptr || !notice) return -1;
  const std::string url = baseUrl != nullptr ? baseUrl : kDefaultBaseUrl;

  std::uint32_t expected = kStateIdle;
  if (!initState.compare_exchange_strong(expected, kStateInitialising)) return -1;
  ++generation;
  StateOutcome outcome(initState);

  std::int32_t result = ValidateAndStoreParams(url.c_str(), credential1, credential2, credential3, targetId, modeFlag,
                                               videoParam, systemParam);
  if (result != 0) return result;
  result = InitServices(systemParam);
  if (result != 0) return result;

  SetupServices();
  this->reconnectNumber = reconnectNumber;
  // Last, for a notice interface that holds this object is let go only by a release, which needs the state ready.
  this->notice.Replace(std::move(notice));
  outcome.ready = true;
  return 0;
}

std::int32_t CQVDataControl::InitServices(const QvDataSystemParam* callersParam) {
  if (!passInterface.Copy()) passInterface.Replace(pass_interface::IPassInterface::Create());
  if (!wsManager.Copy()) wsManager.Replace(ws_interface::IWSManagerInterface::Create());

  const auto service = passInterface.Copy();
  const auto manager = wsManager.Copy();
  if (!service || !manager) return -1;

  const auto stored = systemParam.Copy();
  const std::int32_t result = service->Initialise(
      baseUrl.Copy().c_str(), credential1.Copy().c_str(), credential2.Copy().c_str(), credential3.Copy().c_str(),
      kVersion, shared_from_this(), nullptr, stored->httpValue1, stored->httpValue2, true);
  if (result != 0) return result;

  // The caller's own record decides here; without one, the stored default.
  const std::uint32_t wsManagerValue = callersParam != nullptr ? callersParam->wsManagerValue : stored->wsManagerValue;
  return manager->Initialise(kWsManagerNumber, wsManagerValue);
}

std::int32_t CQVDataControl::ValidateAndStoreParams(const char* baseUrl, const char* credential1,
                                                    const char* credential2, const char* credential3,
                                                    const char* targetId, std::int32_t modeFlag,
                                                    const QvVideoParam* videoParam,
                                                    const QvDataSystemParam* systemParam) {
  if (videoParam != nullptr && !IsValid(*videoParam)) return -1;
  const QvVideoParam video = videoParam != nullptr ? *videoParam : QvVideoParam();
  // Stored before the system record is checked, and kept when that one fails.
  this->videoParam.Replace(std::make_shared<const QvVideoParam>(video));

  if (systemParam != nullptr && !IsValid(*systemParam)) return -1;
  const QvDataSystemParam system = systemParam != nullptr ? *systemParam : QvDataSystemParam();
  this->systemParam.Replace(std::make_shared<const QvDataSystemParam>(system));

  this->baseUrl.Replace(baseUrl);
  this->credential1.Replace(credential1);
  this->credential2.Replace(credential2);
  this->credential3.Replace(credential3);
  this->targetId.Replace(targetId);
  this->modeFlag = modeFlag;
  // Without a key the session cache is left out; that is no reason to fail.
  MakeCacheKey(credential1, credential2, targetId);
  return 0;
}

std::int32_t CQVDataControl::MakeCacheKey(const std::string& a, const std::string& b, const std::string& c) {
  const std::string joined = a + "_" + b + "_" + c;
  std::string key = EncryptSessionText(joined.data(), static_cast<std::int32_t>(joined.size()));
  const std::int32_t result = key.empty() ? -1 : 0;
  cacheKey.Replace(std::move(key));
  return result;
}

void CQVDataControl::SetupServices() {
  const std::string target = targetId.Copy();
  const auto processName = HostProcessName();
  const bool isDefaultMode = modeFlag == 0;
  status.MakeAndFill([&](StatusTemplate::Message& message, Status& data) {
    message.defaultMode = isDefaultMode ? 1 : 0;
    data.targetId = target;
    data.channel = "websocket";
    data.sdkVersion = kVersion;
    data.interfaceVersion = kVersion;
    if (processName) data.processName = *processName;
  });
}

}  // namespace qv_data_interface
