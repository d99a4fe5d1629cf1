// The front end's commands. Run on its threads, side by side with each other, with notices and with a release;
// forwarding takes no lock that is held across a call.
#include "control/data_control.h"
#include "surface/log.h"

namespace qv_data_interface {

using ws_interface::IWSInterface;

bool CQVDataControl::GateIsOpen() const {
  return initState == kStateReady && connectRequested.IsConfirmed(generation);
}

template <class... Params, class... Args>
std::int32_t CQVDataControl::Forward(std::int32_t (IWSInterface::*operation)(Params...), Args... args) {
  if (!GateIsOpen()) return -1;
  // The copy keeps the connection object alive for the length of the call, whatever a release does meanwhile.
  const auto connection = wsConnection.Copy();
  return connection ? ((*connection).*operation)(args...) : -1;
}

// The public numbering and the connection object's cross at the start: 3 goes to its third operation, 4 to its second,
// 5 to 9 each to the one before, and from 10 on the numbers are the same.

std::int32_t CQVDataControl::SendInReq3(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                                        std::int32_t count) {
  if (count == 0) return -1;
  return Forward(&IWSInterface::SendReq3, value1, value2, value3, count);
}

std::int32_t CQVDataControl::SendInReq4(std::uint64_t value1, std::uint64_t value2) {
  return Forward(&IWSInterface::SendReq2, value1, value2);
}

std::int32_t CQVDataControl::SendInReq5(float value1, float value2, float value3, float value4, float value5,
                                        float value6, float value7, float value8) {
  return Forward(&IWSInterface::SendReq4, value1, value2, value3, value4, value5, value6, value7, value8);
}

std::int32_t CQVDataControl::SendInReq6(std::int32_t value1, float value2, float value3, float value4) {
  return Forward(&IWSInterface::SendReq5, value1, value2, value3, value4);
}

std::int32_t CQVDataControl::SendInReq7(const char* text1, const char* text2) {
  if (text1 == nullptr || text2 == nullptr) return -1;
  return Forward(&IWSInterface::SendReq6, text1, text2);
}

std::int32_t CQVDataControl::SendInReq8(const char* text) {
  return text != nullptr ? Forward(&IWSInterface::SendReq7, text) : -1;
}

std::int32_t CQVDataControl::SendInReq9(const char* text) {
  return text != nullptr ? Forward(&IWSInterface::SendReq8, text) : -1;
}

std::int32_t CQVDataControl::SendInReq10(std::uint64_t value1, std::uint64_t value2) {
  return Forward(&IWSInterface::SendReq10, value1, value2);
}

std::int32_t CQVDataControl::SendInReq11(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                                         std::int32_t value4) {
  return Forward(&IWSInterface::SendReq11, value1, value2, value3, value4);
}

std::int32_t CQVDataControl::SendInMicParamReq(std::int32_t value1, std::int32_t value2, std::int32_t value3) {
  QV_LOG(kLogTrace, "[QV_DATA_INTERFACE]SendInMicParamReq[%d] [%d] [%d]", value1, value2, value3);
  return Forward(&IWSInterface::SendMicParamReq, value1, value2, value3);
}

std::int32_t CQVDataControl::SendInReq13(std::uint64_t value1, std::uint64_t value2) {
  return Forward(&IWSInterface::SendReq13, value1, value2);
}

std::int32_t CQVDataControl::SendInCameraParamReq(std::int32_t videoFormat, std::int32_t value2, std::int32_t value3,
                                                  std::uint64_t value4, std::int32_t value5) {
  if (videoFormat == QV_VIDEO_FORMAT_H265) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE]Camera do not support H265");
    return -1;
  }
  QV_LOG(kLogTrace, "[QV_DATA_INTERFACE]SendInCameraParamReq[%d] [%d] [%d]", videoFormat, value2, value3);
  return Forward(&IWSInterface::SendCameraParamReq, videoFormat, value2, value3, value4, value5);
}

std::int32_t CQVDataControl::SendInReq15(std::uint64_t value1, std::uint64_t value2) {
  return Forward(&IWSInterface::SendReq15, value1, value2);
}

std::int32_t CQVDataControl::SendInReq16(std::uint64_t value1, std::uint64_t value2) {
  return Forward(&IWSInterface::SendReq16, value1, value2);
}

std::int32_t CQVDataControl::SendInReq17(std::int32_t value) {
  return Forward(&IWSInterface::SendReq17, value);
}

std::int32_t CQVDataControl::SendDummyReq() {
  return Forward(&IWSInterface::SendDummyReq);
}

std::int32_t CQVDataControl::ChangeIsp(std::uint32_t ispCode) {
  // The front end may drop its last pointer in a notice that comes inside this call. Empty inside the destructor.
  const auto self = weak_from_this().lock();
  const Generation since = generation;
  if (!GateIsOpen()) return -1;
  const FrontEnd frontEnd = notice.Copy();
  std::optional<InitWSOutcome> outcome;
  {
    // Inside the front end's callback this thread may be the very one that a rebuild elsewhere is waiting for.
    if (!ispLock.Acquire(!FrontEndScope::IsInside())) return -1;
    const RebuildLockReleaser releaser(ispLock);
    outcome = ChangeIspLocked(ispCode, since);
  }
  return outcome ? FinishInitWS(frontEnd, *outcome) : -1;
}

std::optional<CQVDataControl::InitWSOutcome> CQVDataControl::ChangeIspLocked(std::uint32_t ispCode, Generation since) {
  // Released while this call waited its turn.
  if (generation != since) return InitWSOutcome::kOvertakenByRelease;
  TakeOverGrantedInfoLocked();
  if (ispCode == currentIspCode) return InitWSOutcome::kConnectionHeld;
  const pass_interface::StreamEndpoints* endpoints = ChooseEndpointsLocked(ispCode, since);
  if (endpoints == nullptr) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE]Can not find ispInfo with IspCode[%d]", static_cast<int>(ispCode));
    return std::nullopt;
  }
  DropConnection(since);
  return InitWS(*endpoints, since);
}

void CQVDataControl::TakeOverGrantedInfoLocked() {
  const auto granted = grantedInfo.Take();
  if (!granted) return;
  instanceInfo = granted->info;
  instanceInfoSince = granted->since;
}

const pass_interface::StreamEndpoints* CQVDataControl::ChooseEndpointsLocked(std::uint32_t ispCode, Generation since) {
  // What was granted before the last release may be another phone's.
  if (instanceInfoSince != since) return nullptr;
  const int shownCode = static_cast<int>(ispCode);
  if (ispCode == kIspCodeDefault) {
    currentIspCode = ispCode;
    QV_LOG(kLogInfo, "[QV_DATA_INTERFACE]Change Isp [%d][DEFAULT]", shownCode);
    return &instanceInfo.endpoints;
  }
  // The last line of that code counts, and each is logged.
  const pass_interface::StreamEndpoints* endpoints = nullptr;
  for (const auto& line : instanceInfo.subStreamInfoList) {
    if (line.ispCode != shownCode) continue;
    currentIspCode = ispCode;
    endpoints = &line.endpoints;
    QV_LOG(kLogInfo, "[QV_DATA_INTERFACE]Change Isp [%d][%s]", line.ispCode, line.label.c_str());
  }
  return endpoints;
}

}  // namespace qv_data_interface
