// Factories, logger set-up, module attach, result codes and the operations of an embedding SDK.
#include "surface/result_messages.h"
#include "tests/library/fakes/threads.h"
#include "tests/library/library_test.h"

namespace library_test {
namespace {

using qv_data_interface::IQVDataInterface;
using qv_data_interface::IQVInternalDataInterface;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

struct Surface : LibraryTest {};

TEST_F(Surface, EachFactoryWritesItsVersionLineOnceInAProcess) {
  const auto first = IQVDataInterface::Create();
  const auto second = IQVDataInterface::Create();
  EXPECT_NE(first, second);
  const auto third = IQVInternalDataInterface::CreateInternalDataInterface();
  const auto fourth = IQVInternalDataInterface::CreateInternalDataInterface();
  EXPECT_NE(third, fourth);
  auto& recorder = fakes::Recorder::Get();
  EXPECT_EQ(recorder.CountEver("log20 QV Data Interface Version[1.13.0]"), 1);
  EXPECT_EQ(recorder.CountEver("log20 QV In Data Interface Version[1.13.0]"), 1);
}

TEST_F(Surface, AControllerThatWasNeverInitialisedDiesWithoutTouchingAService) {
  controller.reset();
  EXPECT_THAT(Take(), ElementsAre());
}

TEST_F(Surface, LoadingRegistersTheSdkTypeOnce) {
  const Calls calls = fakes::Recorder::Get().CallsBeforeMain();
  EXPECT_THAT(calls, ElementsAre("collect.SetCollectSdkType(data_interface)"));
}

TEST_F(Surface, TheSdkTypeIsHandedToTheCollector) {
  IQVInternalDataInterface::SetSdkType("embedding");
  EXPECT_THAT(Take(), ElementsAre("collect.SetCollectSdkType(embedding)"));
}

TEST_F(Surface, ANullLogParameterSetsUpTheLoggerWithItsDefaultsEachTime) {
  const Calls setUp = {"dump.GenerateMiniDump(./QVLog, CoreHappen)",
                       "log.SetLogLevel(20)",
                       "log.SetLogPath(./QVLog)",
                       "log.SetLogName(QV_DATA)",
                       "log.SetLogSizeSetting(1024)",
                       "log.SetLogModeSetting(0)",
                       "log.SetLogCountSetting(5)",
                       "log.StartLog()"};
  IQVDataInterface::SetLogParam(nullptr);
  EXPECT_EQ(Take(), setUp);
  IQVDataInterface::SetLogParam(nullptr);
  EXPECT_EQ(Take(), setUp);
}

TEST_F(Surface, ALogParameterSetsUpTheLoggerFromItsFields) {
  qv_data_interface::QvLogParam param;
  param.level = 60;
  std::string("logs").copy(param.path, 5);
  param.path[4] = 0;
  std::string("mine").copy(param.name, 5);
  param.name[4] = 0;
  param.sizeSetting = 11;
  param.modeSetting = 12;
  param.countSetting = 13;
  IQVDataInterface::SetLogParam(&param);
  EXPECT_THAT(Take(), ElementsAre("dump.GenerateMiniDump(logs, CoreHappen)", "log.SetLogLevel(60)",
                                  "log.SetLogPath(logs)", "log.SetLogName(mine)", "log.SetLogSizeSetting(11)",
                                  "log.SetLogModeSetting(12)", "log.SetLogCountSetting(13)", "log.StartLog()"));
}

TEST_F(Surface, ResultCodesHaveTheirTexts) {
  const std::pair<std::int32_t, const char*> cases[] = {
      {0, "success"},
      {60701001, "web socket init failed"},
      {60701002, "web socket disconnect"},
      {60701003, "web socket connecting"},
      {60702001, "Http Req for phone-connect failed"},
      {60702002, "Http Req for phone-connect can not get 200"},
      {60702003, "Http Req for refresh-session failed"},
      {60702004, "Http Req for refresh-session can not get 200"},
      {60709999, ""},
  };
  for (const auto& [code, message] : cases) EXPECT_EQ(qv_data_interface::ResultMessage(code), message) << code;
}

struct Telemetry : LibraryTest {};

TEST_F(Telemetry, NothingIsSentBeforeAnythingWasGathered) {
  Internal().SetSdkVersion(nullptr);
  Internal().RecordMilestone(nullptr, 5);
  Internal().SendMessageCollect(1, 2, 3, "detail", "extra");
  EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(Telemetry, AMilestoneKeepsItsLastTime) {
  Internal().RecordMilestone("x", 5);
  Internal().RecordMilestone("x", 7);
  Internal().RecordMilestone(nullptr, 9);
  EXPECT_THAT(Gathered().milestones, ElementsAre(Pair("x", 7)));
}

TEST_F(Telemetry, AnSdkVersionHoldsUntilInitAndAgainAfterIt) {
  Internal().SetSdkVersion("2.0.1");
  EXPECT_EQ(Gathered().sdkVersion, "2.0.1");
  InitReady();
  EXPECT_EQ(Gathered().sdkVersion, "1.13.0");
  Internal().SetSdkVersion("2.0.1");
  Internal().SetSdkVersion(nullptr);
  EXPECT_EQ(Gathered().sdkVersion, "2.0.1");
  EXPECT_EQ(Gathered().interfaceVersion, "1.13.0");
}

TEST_F(Telemetry, AMessageIsASnapshotOfItsOwn) {
  Internal().RecordMilestone("first", 1);
  const std::int64_t before = Now();
  Internal().SendMessageCollect(3, 4, -5, "detail", "extra");
  Internal().RecordMilestone("second", 2);
  Internal().SendMessageCollect(1, 2, 0, "", "");
  EXPECT_THAT(Take(), ElementsAre("collect.Report(3, 4, -5, detail, extra)", "collect.Report(1, 2, , , )"));

  const auto& one = Services().messages[0];
  const auto& two = Services().messages[1];
  EXPECT_NE(one, two);
  EXPECT_NE(one->data, two->data);
  EXPECT_EQ(one->defaultMode, 1);
  EXPECT_GE(one->timestamp, before);
  EXPECT_LE(one->timestamp, Now());
  EXPECT_EQ(one->tag, "");
  EXPECT_THAT(fakes::StatusOf(*one).milestones, ElementsAre(Pair("first", 1)));
  EXPECT_THAT(fakes::StatusOf(*two).milestones, ElementsAre(Pair("first", 1), Pair("second", 2)));
  EXPECT_EQ(fakes::StatusOf(*two).errorCode, "");
  EXPECT_EQ(fakes::StatusOf(*two).detailText, "") << "an earlier message leaves no trace";
}

TEST_F(Telemetry, NullTextsCountAsEmpty) {
  Internal().RecordMilestone("x", 5);
  Internal().SendMessageCollect(1, 2, 60701001, nullptr, nullptr);
  EXPECT_THAT(Take(), ElementsAre("collect.Report(1, 2, 60701001, , )"));
}

TEST_F(Telemetry, ACollectorMayCallBack) {
  Internal().RecordMilestone("x", 5);
  At("collect.Report", [&] {
    Internal().RecordMilestone("y", 6);
    Internal().SendMessageCollect(9, 9, 0, "", "");
  });
  fakes::Worker worker([&] { Internal().SendMessageCollect(1, 2, 0, "", ""); });
  worker.Finish();
  EXPECT_EQ(Gathered().milestones.size(), 2U);
}

TEST_F(Telemetry, WithoutACollectorAMessageIsDropped) {
  InitReady();
  Services().collectorMissing = true;
  Internal().SendMessageCollect(1, 2, 0, "", "");
  EXPECT_THAT(Take(), IsEmpty());
}

}  // namespace
}  // namespace library_test
