// GetPhoneConnect and what follows a session in hand. GetPhoneConnect runs on the front end's thread,
// HandlePhoneConnect there (session from the cache) or on the HTTP service's thread (session granted).
#include "control/data_control.h"
#include "database_interface/database_interface.h"
#include "session/instance_info_codec.h"
#include "session/session_cipher.h"
#include "surface/log.h"
#include "telemetry/clock.h"

namespace qv_data_interface {
namespace {

using pass_interface::InstanceInfo;

// A cached session must stay valid this long, so that it is not used close to its end.
constexpr std::int64_t kCacheMarginMs = 600000;

// Holds the right to connect in one generation. Unless confirmed, the connect may be tried again.
class ConnectClaim {
 public:
  ConnectClaim(ConnectRequest& request, std::uint32_t generation)
      : request(request), generation(generation), isGranted(request.Claim(generation)) {}
  ~ConnectClaim() {
    if (isGranted) request.GiveUp(generation);
  }
  ConnectClaim(const ConnectClaim&) = delete;
  ConnectClaim& operator=(const ConnectClaim&) = delete;

  bool IsGranted() const { return isGranted; }
  void Confirm() { request.Confirm(generation); }

 private:
  ConnectRequest& request;
  const std::uint32_t generation;
  const bool isGranted;
};

}  // namespace

std::int32_t CQVDataControl::GetPhoneConnect() {
  // The front end may drop its last pointer in a notice that comes inside this call. Empty inside the destructor.
  const auto self = weak_from_this().lock();
  const Generation since = generation;
  if (initState != kStateReady) return -1;
  QV_LOG(kLogTrace, "[QV_DATA_INTERFACE][TimeConsumingFlag][%s] start; Begin GetPhoneConnect", targetId.Copy().c_str());

  const auto service = passInterface.Copy();
  // Copied first and checked then, so that the service is that of this generation.
  if (!service || generation != since) return -1;
  ConnectClaim claim(connectRequested, since);
  if (!claim.IsGranted()) return -1;
  RecordMilestoneNow("startGetInstanceInfo");

  InstanceInfo cached;
  if (LoadCachedInfo(cached)) {
    QV_LOG(kLogInfo, "[QV_DATA_INTERFACE][%s] Hit session cache", targetId.Copy().c_str());
    HandlePhoneConnect(cached, since);
  } else if (service->RequestPhoneConnect(targetId.Copy().c_str(), "", "", nullptr) != 0) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE]GetPhoneConnect failed");
    return -1;
  }
  claim.Confirm();
  return generation == since ? 0 : -1;
}

bool CQVDataControl::LoadCachedInfo(InstanceInfo& info) {
  const std::string key = cacheKey.Copy();
  if (key.empty()) return false;
  std::string cipherText;
  const auto database = database_interface::IDatabaseInterface::GetDbInstance();
  if (!database || database->LoadSessionCache(key.c_str(), NowMs() + kCacheMarginMs, cipherText) < 1) return false;
  const std::string json = DecryptSessionText(cipherText.data(), static_cast<std::int32_t>(cipherText.size()));
  return ParseInstanceInfo(json.c_str(), info) == 0;
}

void CQVDataControl::HandlePhoneConnect(const InstanceInfo& info, Generation since) {
  const FrontEnd frontEnd = notice.Copy();
  // A release may pass at any moment, and an Init for another phone, of which this record says nothing. So each thing
  // is kept only for the generation that it was granted in.
  sessionId.Update([&](std::string& id) {
    if (generation == since) id = info.sessionId;
  });
  QV_LOG(kLogTrace, "[QV_DATA_INTERFACE][TimeConsumingFlag][%s] HandlePhoneConnect; Begin connect ws",
         targetId.Copy().c_str());
  RecordMilestoneNow("endGetInstanceInfo");
  RecordMilestoneNow("startConnect");

  FinishInitWS(frontEnd, InitWS(info.endpoints, since));
  status.FillIfMade([&](Status& data) {
    if (generation != since) return;
    // Not of the record: it may have been renewed since.
    data.sessionId = sessionId.Copy();
    data.wsDomain = info.endpoints.webSocketDomain;
    data.wsPort = std::to_string(info.endpoints.webSocketPort);
  });
  const auto granted = std::make_shared<const GrantedInfo>(GrantedInfo{info, since});
  grantedInfo.Update([&](std::shared_ptr<const GrantedInfo>& newest) {
    if (generation == since) newest = granted;
  });
  RegisterInstance(info, since);
  if (IsCurrent(since)) TellIspList(frontEnd, info);
}

void CQVDataControl::RegisterInstance(const InstanceInfo& info, Generation since) {
  const auto collector = collect_interface::ICollectInterface::GetCollectInstance(false);
  if (!collector) return;
  const std::int32_t rowId = collectRowId.Copy();
  // Copied first and checked then, so that the row is that of this generation.
  if (generation != since) return;
  if (rowId == 0) {
    InsertInstanceRow(*collector, since);
  } else if (collector->UpdataInstanceSessionId(rowId, info.sessionId.c_str(),
                                                static_cast<int>(info.sessionId.size())) == -1) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE]UpdataInstanceSessionId failed");
  }
}

void CQVDataControl::InsertInstanceRow(collect_interface::ICollectInterface& collector, Generation since) {
  int inserted = 0;
  if (collector.InsertInstanceInfo(&inserted, targetId.Copy().c_str(), sessionId.Copy().c_str(), modeFlag == 0 ? 1 : 0,
                                   "websocket") == -1) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE]InsertInstanceInfo failed");
  }
  if (inserted == 0) return;

  // Two answers at once insert two rows, and a release may have passed already: a row that nobody will delete later is
  // deleted here.
  const bool isKept = collectRowId.PutIfEmpty(inserted, [&] { return IsCurrent(since); });
  if (!isKept && inserted > 0) collector.DeleteInstanceInfo(inserted);
}

void CQVDataControl::TellIspList(const FrontEnd& frontEnd, const InstanceInfo& info) {
  std::vector<IspItem> items;
  items.reserve(info.subStreamInfoList.size());
  for (const auto& line : info.subStreamInfoList) items.push_back({line.ispCode, line.label.c_str()});
  Tell(frontEnd, [&items](IQVDataInterfaceNotic& notic) {
    notic.OnIspList(items.empty() ? nullptr : items.data(), items.size());
  });
}

}  // namespace qv_data_interface
