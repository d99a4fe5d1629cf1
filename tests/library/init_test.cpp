// Init: arguments, ranges, what is stored when, and the services' initialisation.
#include <utility>

#include "tests/library/library_test.h"

namespace library_test {
namespace {

const std::string kVideo = "log60 video param is illegal";
const std::string kFormat = "log60 video format only support QV_VIDEO_FORMAT_H264/QV_VIDEO_FORMAT_H265";
const std::string kSystem = "log60 system param is illegal";

struct Initialisation : LibraryTest {};

TEST_F(Initialisation, AMissingArgumentIsRefusedBeforeAnythingIsTouched) {
  const auto expectRefused = [&](auto& argument, auto missing) {
    const auto whole = std::exchange(argument, missing);
    EXPECT_EQ(Init(), -1);
    argument = whole;
  };
  for (const char** text : {&credential1, &credential2, &credential3, &targetId}) {
    expectRefused(*text, nullptr);
    expectRefused(*text, "");
  }
  expectRefused(videoParam, nullptr);
  expectRefused(frontEnd, nullptr);
  EXPECT_THAT(Take(), IsEmpty());
  EXPECT_EQ(Init(), 0) << "after the refusals";
}

TEST_F(Initialisation, RecordsAreCheckedAgainstTheirRanges) {
  using Value = std::uint32_t;
  struct {
    void (*set)(Initialisation&, Value);
    Value least;
    Value most;
    const std::string& refusal;
  } const cases[] = {
      {[](auto& t, Value value) { t.video.width = static_cast<std::uint16_t>(value); }, 100, 4096, kVideo},
      {[](auto& t, Value value) { t.video.height = static_cast<std::uint16_t>(value); }, 100, 4096, kVideo},
      {[](auto& t, Value value) { t.video.frameRate = static_cast<std::uint16_t>(value); }, 0, 60, kVideo},
      {[](auto& t, Value value) { t.video.videoFormat = value; }, 264, 265, kFormat},
      {[](auto& t, Value value) { t.system.wsManagerValue = value; }, 1000, 30000, kSystem},
      {[](auto& t, Value value) { t.system.httpValue1 = value; }, 1000, 30000, kSystem},
      {[](auto& t, Value value) { t.system.httpValue2 = value; }, 1000, 60000, kSystem},
      {[](auto& t, Value value) { t.system.wsOptionInterval = value; }, 1000, 60000, kSystem},
  };
  for (const auto& each : cases) {
    for (const Value value : {each.least - 1, each.least, each.most, each.most + 1}) {
      SCOPED_TRACE(std::to_string(&each - cases) + " " + std::to_string(value));
      StartOver();
      video = {};
      system = {};
      each.set(*this, value);
      const bool isLegal = each.least <= value && value <= each.most;
      EXPECT_EQ(Init(), isLegal ? 0 : -1);
      EXPECT_EQ(Take() == Calls{each.refusal}, !isLegal);
    }
  }
}

TEST_F(Initialisation, SizesAreCheckedBeforeTheFormatAndThatBeforeTheSystemInWhichAnUnusedIntervalIsNot) {
  video.videoFormat = 266;
  system.httpValue1 = 0;
  EXPECT_EQ(Init(), -1);
  EXPECT_THAT(Take(), ElementsAre(kFormat));
  video.width = 1;
  EXPECT_EQ(Init(), -1);
  EXPECT_THAT(Take(), ElementsAre(kVideo));
  video = {};
  system = {};
  system.wsOptionEnabled = false;
  system.wsOptionInterval = 0;
  EXPECT_EQ(Init(), 0);
}

TEST_F(Initialisation, ServicesAreMadeAndInitialisedInOrder) {
  system.wsManagerValue = 1111;
  system.httpValue1 = 2222;
  system.httpValue2 = 3333;
  EXPECT_EQ(Init(), 0);
  EXPECT_THAT(Take(), ElementsAre("cipher.Encrypt", "pass.Create()", "wsManager.Create()",
                                  "pass.Initialise(https://cloud, credential-1, credential-2, credential-3, 1.13.0, "
                                  "sink, null, 2222, 3333, 1)",
                                  "wsManager.Initialise(10, 1111)"));
  EXPECT_EQ(Services().cipherCalls[0].input, "credential-1_credential-2_phone-1");
}

TEST_F(Initialisation, WithoutASystemRecordAndABaseUrlTheDefaultsServe) {
  systemParam = nullptr;
  baseUrl = nullptr;
  EXPECT_EQ(Init(), 0);
  const Calls calls = Take();
  ASSERT_EQ(calls.size(), 5U);
  EXPECT_THAT(calls[3], testing::MatchesRegex("pass.Initialise.http.*, 5000, 5000, 1."));
  EXPECT_EQ(calls[4], "wsManager.Initialise(10, 5000)");
}

TEST_F(Initialisation, ASecondInitIsRefusedWhileTheFirstRunsAndAfterIt) {
  std::int32_t inside = 0;
  At("pass.Initialise", [&] { inside = Init(); });
  EXPECT_EQ(Init(), 0);
  EXPECT_EQ(inside, -1);
  Take();
  EXPECT_EQ(Init(), -1);
  EXPECT_THAT(Take(), IsEmpty());
  EXPECT_EQ(controller->GetPhoneConnect(), 0) << "the state is unchanged";
}

TEST_F(Initialisation, AnIllegalSystemRecordLeavesTheVideoRecordStoredAndTheTextsNot) {
  video.videoFormat = 265;
  system.httpValue1 = 0;
  EXPECT_EQ(Init(), -1);
  Take();
  EXPECT_EQ(Notices().OnAuthRsp(0, 0, 0, "264,265"), 265);
  EXPECT_THAT(Take(), ElementsAre("log20 []Choose video format[265]"));
}

TEST_F(Initialisation, TheStatusIsStampedWithWhoRuns) {
  for (const std::int32_t mode : {0, 3}) {
    modeFlag = mode;
    InitReady();
    Internal().SendMessageCollect(1, 2, 0, "", "");
    EXPECT_EQ(Services().messages.back()->defaultMode, mode == 0 ? 1 : 0);
    const Status status = LastStatus();
    EXPECT_THAT((Calls{status.targetId, status.channel, status.sdkVersion, status.interfaceVersion}),
                ElementsAre("phone-1", "websocket", "1.13.0", "1.13.0"));
    EXPECT_THAT(status.processName, StartsWith("library_tests"));
    controller->ReleasePhoneConnect();
  }
}

}  // namespace
}  // namespace library_test
