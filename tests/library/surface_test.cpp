// Factories, logger set-up, module attach, result codes and the operations of an embedding SDK.
#include "surface/result_messages.h"
#include "tests/library/fakes/threads.h"
#include "tests/library/library_test.h"

namespace library_test {
namespace {

using Surface = LibraryTest;
using Telemetry = LibraryTest;

TEST_F(Surface, EachFactoryWritesItsVersionLineOnceInAProcess) {
  EXPECT_NE(IQVDataInterface::Create(), IQVDataInterface::Create());
  const auto create = IQVInternalDataInterface::CreateInternalDataInterface;
  EXPECT_NE(create(), create());
  auto& recorder = fakes::Recorder::Get();
  EXPECT_EQ(recorder.CountEver("log20 QV Data Interface Version[1.13.0]"), 1);
  EXPECT_EQ(recorder.CountEver("log20 QV In Data Interface Version[1.13.0]"), 1);
}

TEST_F(Surface, AControllerThatWasNeverInitialisedDiesWithoutTouchingAService) {
  controller.reset();
  EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(Surface, TheSdkTypeIsRegisteredOnceByLoadingAndByTheEmbeddingSdk) {
#ifndef _WIN32  // Only a DLL is told that it is attached.
  EXPECT_EQ(fakes::Recorder::Get().CountEver("collect.SetCollectSdkType(data_interface)"), 1);
#endif
  IQVInternalDataInterface::SetSdkType("embedding");
  EXPECT_THAT(Take(), ElementsAre("collect.SetCollectSdkType(embedding)"));
}

TEST_F(Surface, ALogParameterSetsUpTheLoggerFromItsFieldsAndNullFromTheDefaultsEachTime) {
  const auto setUp = [](const Calls& values) {
    const char* const names[] = {"Level", "Path", "Name", "SizeSetting", "ModeSetting", "CountSetting"};
    Calls calls = {"dump.GenerateMiniDump(" + values[1] + ", CoreHappen)"};
    for (std::size_t i = 0; i < 6; ++i) calls.push_back(std::string("log.SetLog") + names[i] + "(" + values[i] + ")");
    calls.emplace_back("log.StartLog()");
    return calls;
  };
  const Calls byDefault = setUp({"20", "./QVLog", "QV_DATA", "1024", "0", "5"});
  qv_data_interface::QvLogParam param{60, "logs", "mine", 11, 12, 13};
  IQVDataInterface::SetLogParam(nullptr);
  EXPECT_EQ(Take(), byDefault);
  IQVDataInterface::SetLogParam(&param);
  EXPECT_EQ(Take(), setUp({"60", "logs", "mine", "11", "12", "13"}));
  IQVDataInterface::SetLogParam(nullptr);
  EXPECT_EQ(Take(), byDefault);
}

// The other codes' texts are seen where they are told to the front end.
TEST_F(Surface, AnUnknownResultCodeHasNoText) {
  EXPECT_STREQ(qv_data_interface::ResultMessage(60709999), "");
}

TEST_F(Telemetry, NothingIsSentBeforeAnythingWasGathered) {
  Internal().SetSdkVersion(nullptr);
  Internal().RecordMilestone(nullptr, 5);
  Internal().SendMessageCollect(1, 2, 3, "detail", "extra");
  EXPECT_THAT(Take(), IsEmpty());
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

TEST_F(Telemetry, AMessageIsASnapshotOfItsOwnWithTheLastTimeOfEachMilestone) {
  Internal().RecordMilestone("first", 5);
  Internal().RecordMilestone("first", 1);
  Internal().RecordMilestone(nullptr, 9);
  const std::int64_t before = Now();
  Internal().SendMessageCollect(3, 4, -5, "detail", "extra");
  Internal().RecordMilestone("second", 2);
  Internal().SendMessageCollect(1, 2, 0, nullptr, nullptr);
  EXPECT_THAT(Take(), ElementsAre("collect.Report(3, 4, -5, detail, extra)", "collect.Report(1, 2, , , )"))
      << "an earlier message leaves no trace, and a null text counts as empty";

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

}  // namespace
}  // namespace library_test
