// The shared library as it ships, loaded at run time with nothing of it linked in.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "collect_interface/collect_interface.h"

namespace {

std::vector<std::string>& RegisteredTypes() {
  static std::vector<std::string> types;
  return types;
}

class RecordingCollector : public collect_interface::ICollectInterface {
 public:
  void SetCollectSdkType(const char* sdkType) override { RegisteredTypes().emplace_back(sdkType); }
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

namespace {

TEST(LoadedLibrary, LoadingRegistersTheSdkTypeOnceAndLoadingAgainDoesNot) {
  ASSERT_TRUE(RegisteredTypes().empty());
  void* const first = dlopen(LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(first, nullptr) << dlerror();
  EXPECT_EQ(RegisteredTypes(), std::vector<std::string>{"data_interface"});
  void* const second = dlopen(LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
  EXPECT_EQ(first, second);
  EXPECT_EQ(RegisteredTypes().size(), 1u);
  dlclose(second);
  dlclose(first);
}

}  // namespace
