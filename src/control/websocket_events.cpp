// The WebSocket library's notices. Run on its threads; the notices of one connection do not overlap. Each copies the
// front end's notice interface before anything else, so that one which a release and a new Init overtake does not bring
// the old connection's news to the new front end.
#include <algorithm>

#include "control/data_control.h"
#include "control/video_formats.h"
#include "qv_data_interface/result_codes.h"
#include "surface/log.h"
#include "telemetry/clock.h"

namespace qv_data_interface {
namespace {

enum ConnectState : std::uint32_t { kDisconnected = 0, kConnecting = 1, kConnected = 2 };
enum ConnectStep : std::int32_t { kStepConnected = 0, kStepNameResolved = 5 };

// The service's codes that are not simply passed on.
constexpr std::uint32_t kCodeSessionExpired = 60103013;
constexpr std::uint32_t kCodeOwnNotice = 60102029;

}  // namespace

void CQVDataControl::OnConnectState(std::uint32_t state) {
  const FrontEnd frontEnd = notice.Copy();
  if (state == kConnected) return OnConnected(frontEnd);
  if (state == kConnecting) return OnConnecting(frontEnd);
  if (state == kDisconnected) return OnDisconnected(frontEnd);
}

void CQVDataControl::OnConnected(const FrontEnd& frontEnd) {
  status.FillIfMade([](Status& data) {
    data.connectedTime = NowMs();
    data.connectedFlag = 1;
  });
  SendInReq17(reconnectNumber);
  QV_LOG(kLogTrace, "[QV_DATA_INTERFACE][%s] Connect connected;Error code [%d]", targetId.Copy().c_str(),
         static_cast<int>(kResultSuccess));
  TellStatus(frontEnd, kResultSuccess);
  SendMessageCollect(1, 3, kResultSuccess, "", "");
}

void CQVDataControl::OnConnecting(const FrontEnd& frontEnd) {
  std::int32_t count = 0;
  status.FillIfMade([&count](Status& data) {
    count = ++data.connectingCount;
    data.connectingTime = NowMs();
  });
  QV_LOG(kLogTrace, "[QV_DATA_INTERFACE][%s] Connect connecting;Error code [%d]", targetId.Copy().c_str(),
         static_cast<int>(kResultWsConnecting));
  TellStatus(frontEnd, kResultWsConnecting);
  if (count > 0) SendMessageCollect(0, 3, kResultWsConnecting, "", "");
}

void CQVDataControl::OnDisconnected(const FrontEnd& frontEnd) {
  status.FillIfMade([](Status& data) {
    data.disconnectedTime = NowMs();
    data.connectedFlag = 0;
  });
  firstFrameSeen.exchange(false);
  QV_LOG(kLogTrace, "[QV_DATA_INTERFACE][%s] Connect disconnected;Error code [%d]", targetId.Copy().c_str(),
         static_cast<int>(kResultWsDisconnect));
  TellStatus(frontEnd, kResultWsDisconnect);
  SendMessageCollect(0, 6, kResultWsDisconnect, "", "");
}

void CQVDataControl::OnConnectStep(std::int32_t step) {
  if (step == kStepConnected) {
    RecordMilestoneNow("connectSucc");
    RecordMilestoneNow("startAuth");
  } else if (step == kStepNameResolved) {
    RecordMilestoneNow("dnsParseSucc");
  }
}

std::int32_t CQVDataControl::OnAuthRsp(std::uint64_t /*value1*/, std::uint64_t /*value2*/, std::uint64_t /*value3*/,
                                       const char* formats) {
  const FrontEnd frontEnd = notice.Copy();
  RecordMilestoneNow("onAuthR");
  const std::vector<std::int32_t> known = ParseFormats(formats);
  const std::vector<std::int32_t> offered = supportedFormats.Update([&known](std::vector<std::int32_t>& all) {
    all.insert(all.end(), known.begin(), known.end());
    if (all.empty()) all.push_back(QV_VIDEO_FORMAT_H264);
  });
  const std::int32_t choice = ChooseVideoFormat(frontEnd, offered);
  QV_LOG(kLogInfo, "[QV_DATA_INTERFACE][%s]Choose video format[%d]", targetId.Copy().c_str(), choice);
  RecordMilestoneNow("sendPlay");
  return choice;
}

std::int32_t CQVDataControl::ChooseVideoFormat(const FrontEnd& frontEnd, const std::vector<std::int32_t>& offered) {
  std::int32_t choice = QV_VIDEO_FORMAT_H264;
  if (frontEnd) {
    Tell(frontEnd,
         [&](IQVDataInterfaceNotic& notic) { choice = notic.OnChooseVideoFormat(offered.data(), offered.size()); });
    return choice;
  }
  const auto video = videoParam.Copy();
  if (!video) return choice;
  const auto preferred = static_cast<std::int32_t>(video->videoFormat);
  return std::find(offered.begin(), offered.end(), preferred) != offered.end() ? preferred : choice;
}

void CQVDataControl::OnPlayRsp(std::uint32_t value1, std::uint64_t value2, std::uint32_t value3, std::uint32_t value4,
                               std::uint32_t value5, std::uint32_t value6, std::uint32_t value7, std::uint32_t value8,
                               std::uint32_t value9, std::uint32_t value10) {
  const FrontEnd frontEnd = notice.Copy();
  RecordMilestoneNow("onPlayR");
  status.FillIfMade([](Status& data) { data.playResponseTime = NowMs(); });
  SendMessageCollect(1, 1, 0, "", "");
  Relay(frontEnd, &IQVDataInterfaceNotic::OnPlayRsp, value1, value2, value3, value4, value5, value6, value7, value8,
        value9, value10);
}

void CQVDataControl::OnErrorCode(std::uint32_t code, const char* text) {
  if (code == kCodeSessionExpired) return RefreshSession();

  const auto signedCode = static_cast<std::int32_t>(code);
  const FrontEnd frontEnd = notice.Copy();
  if (frontEnd && code != kCodeOwnNotice) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE][%s] Get error code [%d]", targetId.Copy().c_str(), signedCode);
  }
  Tell(frontEnd, [=](IQVDataInterfaceNotic& notic) {
    if (code == kCodeOwnNotice) {
      notic.OnServiceCode(signedCode, text);
    } else {
      notic.OnStatus(signedCode, text);
    }
  });
  SendMessageCollect(0, 5, signedCode, "", "");
}

void CQVDataControl::RefreshSession() {
  if (const auto service = passInterface.Copy()) service->RequestRefreshSession(sessionId.Copy().c_str(), "", 0);
}

void CQVDataControl::OnFirstFrame(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                                  std::uint32_t value4) {
  const FrontEnd frontEnd = notice.Copy();
  if (!firstFrameSeen) {
    status.FillIfMade([this](Status& data) {
      if (!firstFrameSeen.exchange(true)) data.firstFrameTime = NowMs();
    });
    QV_LOG(kLogTrace, "[QV_DATA_INTERFACE][TimeConsumingFlag][%s]Recv First Frame; SendMessageCollect",
           targetId.Copy().c_str());
    RecordMilestoneNow("recvFirstFrame");
    if (!isInternal) SendMessageCollect(1, 2, 0, "", "");
  }
  Relay(frontEnd, &IQVDataInterfaceNotic::OnFirstFrame, value1, value2, value3, value4);
}

template <class... Params, class... Args>
void CQVDataControl::Relay(const FrontEnd& frontEnd, void (IQVDataInterfaceNotic::*operation)(Params...),
                           Args... args) {
  Tell(frontEnd, [&](IQVDataInterfaceNotic& notic) { (notic.*operation)(args...); });
}

void CQVDataControl::OnNotice5() {
  Relay(notice.Copy(), &IQVDataInterfaceNotic::OnNotice7);
}

void CQVDataControl::OnNotice6(const char* text) {
  const FrontEnd frontEnd = notice.Copy();
  const Generation since = generation;
  Tell(frontEnd, [text](IQVDataInterfaceNotic& notic) { notic.OnNotice8(text); });
  // The connection that stands now: in its notice the front end may have changed the line. After a release and an Init
  // it would be another phone's.
  const auto connection = wsConnection.Copy();
  if (connection && generation == since) connection->SendReq9(text, 0);
}

void CQVDataControl::OnNotice7() {
  Relay(notice.Copy(), &IQVDataInterfaceNotic::OnNotice9);
}

void CQVDataControl::OnNotice8() {
  Relay(notice.Copy(), &IQVDataInterfaceNotic::OnNotice10);
}

void CQVDataControl::OnNotice9(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3, std::uint32_t value4,
                               std::uint32_t value5) {
  Relay(notice.Copy(), &IQVDataInterfaceNotic::OnNotice12, value1, value2, value3, value4, value5);
}

void CQVDataControl::OnNotice10() {
  Relay(notice.Copy(), &IQVDataInterfaceNotic::OnNotice13);
}

void CQVDataControl::OnVideoParamRsp(std::int32_t result, std::uint64_t value, std::uint16_t frameRate,
                                     std::uint32_t bitRate, std::uint16_t width, std::uint16_t height) {
  const FrontEnd frontEnd = notice.Copy();
  if (result == 0) {
    // A new record: the old one may be in use by a connection that is being made.
    videoParam.Update([=](std::shared_ptr<const QvVideoParam>& param) {
      if (!param) return;
      QvVideoParam changed = *param;
      changed.frameRate = frameRate;
      changed.bitRate = bitRate;
      changed.width = width;
      changed.height = height;
      param = std::make_shared<const QvVideoParam>(changed);
    });
  }
  Relay(frontEnd, &IQVDataInterfaceNotic::OnVideoParamRsp, result, value, frameRate, bitRate, width, height);
}

void CQVDataControl::OnNotice12() {
  Relay(notice.Copy(), &IQVDataInterfaceNotic::OnNotice15);
}

void CQVDataControl::OnNotice13(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                                std::uint32_t value4) {
  Relay(notice.Copy(), &IQVDataInterfaceNotic::OnNotice16, value1, value2, value3, value4);
}

void CQVDataControl::OnNotice14() {
  Relay(notice.Copy(), &IQVDataInterfaceNotic::OnNotice19);
}

void CQVDataControl::OnNotice23() {
  Relay(notice.Copy(), &IQVDataInterfaceNotic::OnNotice6);
}

void CQVDataControl::OnNotice24() {
  Relay(notice.Copy(), &IQVDataInterfaceNotic::OnNotice11);
}

void CQVDataControl::OnNotice25() {
  Relay(notice.Copy(), &IQVDataInterfaceNotic::OnNotice17);
}

}  // namespace qv_data_interface
