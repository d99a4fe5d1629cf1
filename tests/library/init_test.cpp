// Init: arguments, ranges, what is stored when, and the services' initialisation.
#include <utility>

#include "tests/library/library_test.h"

namespace library_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::string kVideoIllegal = "log60 video param is illegal";
const std::string kFormatIllegal = "log60 video format only support QV_VIDEO_FORMAT_H264/QV_VIDEO_FORMAT_H265";
const std::string kSystemIllegal = "log60 system param is illegal";

struct Initialisation : LibraryTest {};

TEST_F(Initialisation, AMissingArgumentIsRefusedBeforeAnythingIsTouched) {
  for (const char** text : {&credential1, &credential2, &credential3, &targetId}) {
    for (const char* missing : {static_cast<const char*>(nullptr), ""}) {
      const char* const whole = std::exchange(*text, missing);
      EXPECT_EQ(Init(), -1) << whole;
      *text = whole;
    }
  }
  videoParam = nullptr;
  EXPECT_EQ(Init(), -1);
  videoParam = &video;
  const auto whole = std::exchange(frontEnd, nullptr);
  EXPECT_EQ(Init(), -1);
  EXPECT_THAT(Take(), IsEmpty());
  frontEnd = whole;
  EXPECT_EQ(Init(), 0) << "after the refusals";
}

TEST_F(Initialisation, RecordsAreCheckedAgainstTheirRanges) {
  using U16 = std::uint16_t;
  struct {
    const char* name;
    void (*set)(Initialisation&, std::uint32_t);
    std::uint32_t least;
    std::uint32_t most;
    const std::string* refusal;
  } const cases[] = {
      {"width", [](auto& t, auto value) { t.video.width = static_cast<U16>(value); }, 100, 4096, &kVideoIllegal},
      {"height", [](auto& t, auto value) { t.video.height = static_cast<U16>(value); }, 100, 4096, &kVideoIllegal},
      {"frameRate", [](auto& t, auto value) { t.video.frameRate = static_cast<U16>(value); }, 0, 60, &kVideoIllegal},
      {"videoFormat", [](auto& t, auto value) { t.video.videoFormat = value; }, 264, 265, &kFormatIllegal},
      {"wsManagerValue", [](auto& t, auto value) { t.system.wsManagerValue = value; }, 1000, 30000, &kSystemIllegal},
      {"httpValue1", [](auto& t, auto value) { t.system.httpValue1 = value; }, 1000, 30000, &kSystemIllegal},
      {"httpValue2", [](auto& t, auto value) { t.system.httpValue2 = value; }, 1000, 60000, &kSystemIllegal},
      {"wsOptionInterval", [](auto& t, auto value) { t.system.wsOptionInterval = value; }, 1000, 60000,
       &kSystemIllegal},
  };
  for (const auto& [name, set, least, most, refusal] : cases) {
    for (const std::uint32_t value : {least - 1, least, most, most + 1}) {
      controller = qv_data_interface::IQVDataInterface::Create();
      video = {};
      system = {};
      set(*this, value);
      Take();
      if (least <= value && value <= most) {
        EXPECT_EQ(Init(), 0) << name << " " << value;
      } else {
        EXPECT_EQ(Init(), -1) << name << " " << value;
        EXPECT_THAT(Take(), ElementsAre(*refusal)) << name << " " << value;
      }
    }
  }
}

TEST_F(Initialisation, SizesAreCheckedBeforeTheFormatAndVideoBeforeSystem) {
  video.videoFormat = 266;
  system.httpValue1 = 0;
  EXPECT_EQ(Init(), -1);
  EXPECT_THAT(Take(), ElementsAre(kFormatIllegal));
  video.width = 1;
  EXPECT_EQ(Init(), -1);
  EXPECT_THAT(Take(), ElementsAre(kVideoIllegal));
}

TEST_F(Initialisation, AnIntervalThatIsNotUsedIsNotChecked) {
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
  EXPECT_THAT(calls[3], StartsWith("pass.Initialise(http"));
  EXPECT_THAT(calls[3], testing::EndsWith(", 5000, 5000, 1)"));
  EXPECT_EQ(calls[4], "wsManager.Initialise(10, 5000)");
}

TEST_F(Initialisation, AFailingServiceIsPassedThroughAndInitMayBeRepeated) {
  Services().passInitialiseResult = 17;
  EXPECT_EQ(Init(), 17);
  EXPECT_THAT(Take(), Not(Contains(StartsWith("wsManager.Initialise"))));
  Services().passInitialiseResult = 0;
  Services().wsInitialiseResult = -18;
  EXPECT_EQ(Init(), -18);
  EXPECT_THAT(Take(), ElementsAre("cipher.Encrypt", StartsWith("pass.Initialise"), StartsWith("wsManager.Initialise")))
      << "services that exist are kept";
  EXPECT_EQ(controller->GetPhoneConnect(), -1);
  Notices().OnNotice5();
  EXPECT_THAT(Take(), IsEmpty()) << "the notice is kept by a successful Init only";
  Services().wsInitialiseResult = 0;
  EXPECT_EQ(Init(), 0);
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
    EXPECT_EQ(status.targetId, "phone-1");
    EXPECT_EQ(status.channel, "websocket");
    EXPECT_EQ(status.sdkVersion, "1.13.0");
    EXPECT_EQ(status.interfaceVersion, "1.13.0");
    EXPECT_THAT(status.processName, StartsWith("library_tests"));
    controller->ReleasePhoneConnect();
  }
}

TEST_F(Initialisation, TheCallersRecordsAreCopied) {
  InitReady();
  video.width = 111;
  system.useWss = false;
  ConnectMiss();
  Grant();
  EXPECT_EQ(LastConnection().videoInfo.videoParam.width, 720);
  EXPECT_THAT(LastConnection().url, StartsWith("wss://"));
}

}  // namespace
}  // namespace library_test
