// The command table: every name reaches its own operation with its arguments in order, and a wrong line says why.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "qv_data_interface/dummy_req_interface.h"
#include "tools/qv_connect/commands.h"

namespace qv_connect {
namespace {

using Kind = ParsedCommand::Kind;

class RecordingConnection final : public qv_data_interface::IQVDataDummyReqInterface {
 public:
  using U64 = std::uint64_t;
  using I32 = std::int32_t;

  std::string called;

  I32 Init(const char*, const char*, const char*, const char*, I32,
           std::shared_ptr<qv_data_interface::IQVDataInterfaceNotic>, const qv_data_interface::QvVideoParam*,
           const qv_data_interface::QvDataSystemParam*, I32, const char*) override {
    return Record("Init");
  }
  void ReleasePhoneConnect() override { Record("ReleasePhoneConnect"); }
  I32 GetPhoneConnect() override { return Record("GetPhoneConnect"); }
  I32 SendInReq3(U64 a, U64 b, U64 c, I32 count) override { return Record("SendInReq3", a, b, c, count); }
  I32 SendInReq4(U64 a, U64 b) override { return Record("SendInReq4", a, b); }
  I32 SendInReq5(float a, float b, float c, float d, float e, float f, float g, float h) override {
    return Record("SendInReq5", a, b, c, d, e, f, g, h);
  }
  I32 SendInReq6(I32 a, float b, float c, float d) override { return Record("SendInReq6", a, b, c, d); }
  I32 SendInReq7(const char* a, const char* b) override { return Record("SendInReq7", a, b); }
  I32 SendInReq8(const char* a) override { return Record("SendInReq8", a); }
  I32 SendInReq9(const char* a) override { return Record("SendInReq9", a); }
  I32 SendInReq10(U64 a, U64 b) override { return Record("SendInReq10", a, b); }
  I32 SendInReq11(U64 a, U64 b, U64 c, I32 d) override { return Record("SendInReq11", a, b, c, d); }
  I32 SendInMicParamReq(I32 a, I32 b, I32 c) override { return Record("SendInMicParamReq", a, b, c); }
  I32 SendInReq13(U64 a, U64 b) override { return Record("SendInReq13", a, b); }
  I32 SendInCameraParamReq(I32 format, I32 a, I32 b, U64 c, I32 d) override {
    return Record("SendInCameraParamReq", format, a, b, c, d);
  }
  I32 SendInReq15(U64 a, U64 b) override { return Record("SendInReq15", a, b); }
  I32 SendInReq16(U64 a, U64 b) override { return Record("SendInReq16", a, b); }
  I32 SendInReq17(I32 a) override { return Record("SendInReq17", a); }
  I32 ChangeIsp(std::uint32_t ispCode) override { return Record("ChangeIsp", ispCode); }
  I32 SendDummyReq() override { return Record("SendDummyReq"); }

 private:
  template <class... Values>
  I32 Record(const char* name, const Values&... values) {
    std::ostringstream text;
    text << name;
    ((text << ' ' << values), ...);
    called = text.str();
    return 42;
  }
};

TEST(Commands, EveryLineReachesItsOperationWithItsArgumentsInOrder) {
  const struct {
    const char* line;
    const char* called;
  } cases[] = {
      {"mic 1 -2 3", "SendInMicParamReq 1 -2 3"},
      {"camera 264 1 2 18446744073709551615 -4", "SendInCameraParamReq 264 1 2 18446744073709551615 -4"},
      {"line 65536", "ChangeIsp 65536"},
      {"req3 1 2 3 4", "SendInReq3 1 2 3 4"},
      {"req4 1 2", "SendInReq4 1 2"},
      {"req5 .5 -1 2 3 4 5 6 7", "SendInReq5 0.5 -1 2 3 4 5 6 7"},
      {"req6 -1 0.25 2 3", "SendInReq6 -1 0.25 2 3"},
      {"req7 one \"and two\"", "SendInReq7 one and two"},
      {"req8 \"a \\\"b\\\"\"", "SendInReq8 a \"b\""},
      {"  req9\ttext ", "SendInReq9 text"},
      {"req9 \"\"", "SendInReq9 "},
      {"req10 1 2", "SendInReq10 1 2"},
      {"req11 1 2 3 -4", "SendInReq11 1 2 3 -4"},
      {"req13 1 2", "SendInReq13 1 2"},
      {"req15 1 2", "SendInReq15 1 2"},
      {"req16 1 2", "SendInReq16 1 2"},
      {"req17 -1", "SendInReq17 -1"},
      {"dummy", "SendDummyReq"},
  };
  for (const auto& testCase : cases) {
    SCOPED_TRACE(testCase.line);
    RecordingConnection connection;
    const ParsedCommand command = ParseCommand(testCase.line);
    ASSERT_TRUE(command.call) << command.error;
    EXPECT_EQ(command.call(connection), 42);
    EXPECT_EQ(connection.called, testCase.called);
  }
  EXPECT_EQ(ParseCommand("line 65536").ispCode, 65536U);
}

TEST(Commands, AWrongLineSaysWhatWasWrongAndWhatIsAllowed) {
  const struct {
    const char* line;
    const char* error;
  } cases[] = {
      {"req12 1", "there is no command \"req12\"; \"help\" lists those that there are"},
      {"req4 1", "req4 takes 2 arguments, not 1: req4 a b"},
      {"release now", "release takes no arguments"},
      {"req17 2147483648", "req17: a must be a whole number from -2147483648 to 2147483647, not \"2147483648\""},
      {"line -1", "line: code must be a whole number from 0 to 4294967295, not \"-1\""},
      {"req6 1 2 x 4", "req6: f2 must be a number such as 0.5, not \"x\""},
      {"req6 1 2 nan 4", "req6: f2 must be a number such as 0.5, not \"nan\""},
      {"req8 \"open", "a quotation mark is not closed: req8 \"open"},
  };
  for (const auto& testCase : cases) {
    const ParsedCommand command = ParseCommand(testCase.line);
    EXPECT_EQ(command.kind, Kind::kWrong) << testCase.line;
    EXPECT_EQ(command.error, testCase.error);
  }
}

TEST(Commands, HelpReleaseAndEmptyLinesCallNothing) {
  EXPECT_EQ(ParseCommand("release").kind, Kind::kRelease);
  EXPECT_EQ(ParseCommand("help").kind, Kind::kHelp);
  EXPECT_EQ(ParseCommand("   ").kind, Kind::kNothing);
  EXPECT_EQ(ParseCommand("# req4 1 2").kind, Kind::kNothing);
  EXPECT_THAT(CommandHelp(), testing::HasSubstr("  camera format a b c d "));
}

}  // namespace
}  // namespace qv_connect
