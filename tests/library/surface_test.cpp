// Factories, logger set-up, module attach, result codes and the operations of an embedding SDK.
#include "surface/result_messages.h"
#include "tests/library/transcript.h"

namespace library_test {
namespace {

using Surface = LibraryTest;
using LogSetUp = Transcript;
using Telemetry = Transcript;

TEST_F(Surface, EachFactoryWritesItsVersionLineOnceInAProcess) {
  EXPECT_NE(IQVDataInterface::Create(), IQVDataInterface::Create());
  const auto create = IQVInternalDataInterface::CreateInternalDataInterface;
  EXPECT_NE(create(), create());
  auto& recorder = fakes::Recorder::Get();
  EXPECT_EQ(recorder.CountEver("log20 QV Data Interface Version[1.13.0]"), 1);
  EXPECT_EQ(recorder.CountEver("log20 QV In Data Interface Version[1.13.0]"), 1);
}

TEST_F(Surface, TheSdkTypeIsRegisteredOnceByLoadingAndByTheEmbeddingSdk) {
#ifndef _WIN32  // Only a DLL is told that it is attached.
  EXPECT_EQ(fakes::Recorder::Get().CountEver("collect.SetCollectSdkType(data_interface)"), 1);
#endif
  IQVInternalDataInterface::SetSdkType("embedding");
  EXPECT_THAT(Take(), ElementsAre("collect.SetCollectSdkType(embedding)"));
}

// The texts of the known codes are seen where they are told to the front end.
TEST_F(Surface, AnUnknownResultCodeHasNoText) {
  EXPECT_STREQ(qv_data_interface::ResultMessage(60709999), "");
}

TEST_F(LogSetUp, TakesTheGivenParameterOrTheDefaultsEachTime) {
  qv_data_interface::QvLogParam param{60, "logs", "mine", 11, 12, 13};
  STEP(IQVDataInterface::SetLogParam(nullptr));
  STEP(IQVDataInterface::SetLogParam(&param));
  std::fill(std::begin(param.name), std::end(param.name), 'n');
  STEP(IQVDataInterface::SetLogParam(&param));
  STEP(IQVDataInterface::SetLogParam(nullptr));
}

TEST_F(Telemetry, GathersForTheEmbeddingSdk) {
  Say("Nothing is sent before anything was gathered.");
  STEP(Internal().SetSdkVersion(nullptr));
  STEP(Internal().RecordMilestone(nullptr, 5));
  STEP(Internal().SendMessageCollect(1, 2, 3, "detail", "extra"));
  Say("\nAn SDK version holds until Init, and again after it.");
  STEP(Internal().SetSdkVersion("2.0.1"));
  STEP(Init());
  STEP(Internal().SetSdkVersion("2.0.1"));
  STEP(Internal().SetSdkVersion(nullptr));
  Say("\nThe last time of a milestone counts; an earlier message leaves no trace, and a null text counts as empty.");
  STEP(Internal().RecordMilestone("first", 5));
  STEP(Internal().RecordMilestone("first", 1));
  STEP(Internal().SendMessageCollect(3, 4, -5, "detail", "extra"));
  STEP(Internal().SendMessageCollect(1, 2, 0, nullptr, nullptr));
  STEP(When(Services().messages.back()->timestamp));
  Say("\nA collector may call back.");
  At("collect.Report", [&] {
    Internal().RecordMilestone("second", 6);
    Internal().SendMessageCollect(9, 9, 0, "", "");
  });
  STEP(Internal().SendMessageCollect(1, 2, 0, "", ""));
}

TEST_F(Surface, AMessageIsASnapshotOfItsOwn) {
  Internal().RecordMilestone("first", 1);
  Internal().SendMessageCollect(1, 2, 0, "", "");
  Internal().RecordMilestone("second", 2);
  Internal().SendMessageCollect(1, 2, 0, "", "");
  const auto& messages = Services().messages;
  EXPECT_NE(messages[0], messages[1]);
  EXPECT_NE(messages[0]->data, messages[1]->data);
  EXPECT_THAT(fakes::StatusOf(*messages[0]).milestones, ElementsAre(Pair("first", 1)));
}

}  // namespace
}  // namespace library_test
