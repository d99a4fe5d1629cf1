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

// Lets one call through at a time: of two that race, the second finds the flag set.
class ExclusiveClaim {
 public:
  explicit ExclusiveClaim(std::atomic<bool>& flag) : flag(flag), granted(!flag.exchange(true)) {}
  ~ExclusiveClaim() {
    if (granted) flag = false;
  }
  ExclusiveClaim(const ExclusiveClaim&) = delete;
  ExclusiveClaim& operator=(const ExclusiveClaim&) = delete;

 private:
  std::atomic<bool>& flag;

 public:
  const bool granted;
};

}  // namespace

std::int32_t CQVDataControl::GetPhoneConnect() {
  const Generation since = generation;
  if (initState != kStateReady) return -1;
  QV_LOG(kLogTrace, "[QV_DATA_INTERFACE][TimeConsumingFlag][%s] start; Begin GetPhoneConnect", targetId.Copy().c_str());

  const auto service = passInterface.Copy();
  const ExclusiveClaim claim(connectInProgress);
  if (!service || !claim.granted || connectRequested) return -1;
  RecordMilestoneNow("startGetInstanceInfo");

  InstanceInfo cached;
  if (LoadCachedInfo(cached)) {
    QV_LOG(kLogInfo, "[QV_DATA_INTERFACE][%s] Hit session cache", targetId.Copy().c_str());
    HandlePhoneConnect(cached, since);
  } else if (service->RequestPhoneConnect(targetId.Copy().c_str(), "", "", nullptr) != 0) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE]GetPhoneConnect failed");
    return -1;
  }

  connectRequested.exchange(true);
  if (generation == since) return 0;
  // Released meanwhile: the flag would refuse the next connect. Nobody else sets it while this call has the claim.
  connectRequested.exchange(false);
  return -1;
}

bool CQVDataControl::LoadCachedInfo(InstanceInfo& info) {
  const std::string key = cacheKey.Copy();
  if (key.empty()) return false;
  std::string cipherText;
  const auto database = database_interface::IDatabaseInterface::GetDbInstance();
  if (database->LoadSessionCache(key.c_str(), NowMs() + kCacheMarginMs, cipherText) < 1) return false;
  const std::string json = DecryptSessionText(cipherText.data(), static_cast<std::int32_t>(cipherText.size()));
  return ParseInstanceInfo(json.c_str(), info) == 0;
}

void CQVDataControl::HandlePhoneConnect(const InstanceInfo& info, Generation since) {
  const FrontEnd frontEnd = notice.Copy();
  sessionId.Replace(info.sessionId);
  QV_LOG(kLogTrace, "[QV_DATA_INTERFACE][TimeConsumingFlag][%s] HandlePhoneConnect; Begin connect ws",
         targetId.Copy().c_str());
  RecordMilestoneNow("endGetInstanceInfo");
  RecordMilestoneNow("startConnect");

  InitWS(info.endpoints, since);
  // Released meanwhile, and perhaps initialised anew for another phone, of which this record says nothing.
  if (generation != since) return;
  status.FillIfMade([&info](Status& data) {
    data.sessionId = info.sessionId;
    data.wsDomain = info.endpoints.webSocketDomain;
    data.wsPort = std::to_string(info.endpoints.webSocketPort);
  });
  KeepInstanceInfo(info);
  RegisterInstance(info, since);
  if (IsCurrent(since)) TellIspList(frontEnd, info);
}

void CQVDataControl::KeepInstanceInfo(const InstanceInfo& info) {
  grantedInfo.Replace(std::make_shared<const InstanceInfo>(info));
  if (!ispLock.Acquire(false)) return;
  const RebuildLockReleaser releaser(ispLock);
  TakeOverGrantedInfoLocked();
}

void CQVDataControl::TakeOverGrantedInfoLocked() {
  if (const auto granted = grantedInfo.Take()) instanceInfo = *granted;
}

void CQVDataControl::RegisterInstance(const InstanceInfo& info, Generation since) {
  const auto collector = collect_interface::ICollectInterface::GetCollectInstance(false);
  if (!collector) return;
  const std::int32_t rowId = collectRowId.Copy();
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
