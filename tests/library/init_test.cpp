// Init: arguments, ranges, what is stored when, and the services' initialisation.
#include "tests/library/transcript.h"

namespace library_test {
namespace {

struct Initialisation : Transcript {
  template <class Argument>
  void Without(const std::string& name, Argument& argument, Argument missing) {
    const auto whole = std::exchange(argument, missing);
    Step(name, [this] { return Init(); });
    argument = whole;
  }
  // At both ends of the range and one past them.
  template <class Field>
  void Range(const std::string& name, Field& field, std::uint32_t least, std::uint32_t most) {
    const Field usual = field;
    for (const std::uint32_t value : {least - 1, least, most, most + 1}) {
      StartOver();
      field = static_cast<Field>(value);
      const std::int32_t result = Init();
      Say(name + " " + std::to_string(value) + ": " + std::to_string(result) + (result ? ", " + Take().back() : ""));
    }
    field = usual;
  }
};

TEST_F(Initialisation, RefusesWhatIsMissingOrOutOfRange) {
  for (const char** text : {&credential1, &credential2, &credential3, &targetId}) {
    Without(std::string("without ") + *text, *text, static_cast<const char*>(nullptr));
    Without(std::string("with an empty text for ") + *text, *text, "");
  }
  Without("without a video record", videoParam, static_cast<const qv_data_interface::QvVideoParam*>(nullptr));
  Without("without a notice", frontEnd, std::shared_ptr<fakes::FrontEnd>());
  Say("\nThe ranges of the records.");
  Range("video.width", video.width, 100, 4096);
  Range("video.height", video.height, 100, 4096);
  Range("video.frameRate", video.frameRate, 0, 60);
  Range("video.videoFormat", video.videoFormat, 264, 265);
  Range("system.wsManagerValue", system.wsManagerValue, 1000, 30000);
  Range("system.httpValue1", system.httpValue1, 1000, 30000);
  Range("system.httpValue2", system.httpValue2, 1000, 60000);
  Range("system.wsOptionInterval", system.wsOptionInterval, 1000, 60000);
  system.wsOptionEnabled = false;
  Range("without the option, system.wsOptionInterval", system.wsOptionInterval, 1000, 60000);

  Chapter("Sizes are checked before the format, and that before the system record.");
  video.videoFormat = 266;
  system.httpValue1 = 0;
  STEP(Init());
  video.width = 1;
  STEP(Init());
  Say("\nOf the records before an illegal one the video record is stored, and nothing else.");
  video = {265, 720, 1280, 30, 2048};
  STEP(Init());
  STEP(Notices().OnAuthRsp(0, 0, 0, "264,265"));
}

TEST_F(Initialisation, MakesAndInitialisesTheServicesInOrderAndOnce) {
  system.wsManagerValue = 1111;
  system.httpValue1 = 2222;
  system.httpValue2 = 3333;
  std::int32_t inside = 0;
  At("pass.Initialise", [&] { inside = Init(); });
  STEP(Init());
  STEP(inside);
  STEP(Services().cipherCalls[0].input);
  STEP(Init());
  STEP(controller->GetPhoneConnect());

  Chapter("Without a cipher there is no session cache.");
  Services().encryptFails = 1;
  STEP(Init());
  STEP(controller->GetPhoneConnect());
  STEP(Grant());

  Chapter("Without a system record and a base URL the defaults serve; a mode other than 0 is no default mode.");
  systemParam = nullptr;
  baseUrl = nullptr;
  modeFlag = 3;
  STEP(Init());
}

}  // namespace
}  // namespace library_test
