// The operations of the embedding SDK, which the controller itself uses for its telemetry. Run on any thread.
#include "control/data_control.h"

namespace qv_data_interface {

using collect_interface::ICollectInterface;

void IQVInternalDataInterface::SetSdkType(const char* sdkType) {
  ICollectInterface::GetCollectInstance(false)->SetCollectSdkType(sdkType);
}

void CQVDataControl::SendMessageCollect(int collectType, int collectStatus, int errorCode, const char* detail,
                                        const char* extra) {
  auto message = status.Snapshot(collectType, collectStatus, errorCode, detail, extra);
  if (!message) return;
  if (const auto collector = ICollectInterface::GetCollectInstance(false)) {
    collector->ReportMessageCollect(std::move(message));
  }
}

void CQVDataControl::SetSdkVersion(const char* version) {
  if (version == nullptr) return;
  status.MakeAndFill([version](StatusTemplate::Message&, Status& data) { data.sdkVersion = version; });
}

void CQVDataControl::RecordMilestone(const char* name, std::int64_t timeMs) {
  if (name == nullptr) return;
  status.MakeAndFill([name, timeMs](StatusTemplate::Message&, Status& data) {
    const auto known = data.milestones.find(name);
    if (known != data.milestones.end()) {
      known->second = timeMs;
    } else {
      data.milestones.emplace(name, timeMs);
    }
  });
}

}  // namespace qv_data_interface
