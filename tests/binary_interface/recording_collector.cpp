#include "tests/binary_interface/recording_collector.h"

#include "collect_interface/collect_interface.h"

namespace {

std::vector<std::string> registeredTypes;

class RecordingCollector : public collect_interface::ICollectInterface {
 public:
  void SetCollectSdkType(const char* sdkType) override { registeredTypes.emplace_back(sdkType); }
  int DeleteInstanceInfo(int /*rowId*/) override { return -1; }
  int InsertInstanceInfo(int* /*rowId*/, const char* /*targetId*/, const char* /*sessionId*/, int /*defaultMode*/,
                         const char* /*channel*/) override {
    return -1;
  }
  int UpdataInstanceSessionId(int /*rowId*/, const char* /*sessionId*/, int /*length*/) override { return -1; }
  void ReportMessageCollect(std::shared_ptr<pass_interface::MessageCollect> /*message*/) override {}
};

}  // namespace

std::shared_ptr<collect_interface::ICollectInterface> collect_interface::ICollectInterface::GetCollectInstance(
    bool /*flag*/) {
  return std::make_shared<RecordingCollector>();
}

void collect_interface::ICollectInterface::CoreHappen(const char* /*text*/) {}

const std::vector<std::string>& RegisteredTypes() {
  return registeredTypes;
}
