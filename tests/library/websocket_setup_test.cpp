// What CreateWS is given, and what happens when no connection comes of it.
#include "tests/library/library_test.h"

namespace library_test {
namespace {

struct WebSocketSetup : LibraryTest {};

TEST_F(WebSocketSetup, TheAddressIsSchemeDomainAndPort) {
  const std::tuple<bool, const char*, std::int32_t, const char*> cases[] = {
      {true, "10.0.0.7", 8443, "wss://10.0.0.7:8443"},
      {false, "phone.example", 80, "ws://phone.example:80"},
      {true, "", 0, "wss://:0"},
      {false, "h", 1234567, "ws://h:1234567"}};
  for (const auto& [useWss, domain, port, url] : cases) {
    system.useWss = useWss;
    InstanceInfo info = MakeInfo();
    info.endpoints = {"", 0, "", 0, domain, port};
    Connect(info);
    EXPECT_EQ(LastConnection().url, url);
    ReleaseAndForget();
  }
}

TEST_F(WebSocketSetup, TheRecordsCarryIdentityVideoAndSystemParameters) {
  modeFlag = 4;
  video = {265, 640, 480, 25, 999};
  system.wsOptionEnabled = false;
  system.wsOptionInterval = 12345;
  system.useWss = false;
  InitReady();
  video = {};
  system = {};  // The caller's records were copied.
  ConnectMiss();
  Grant();
  const fakes::CreatedConnection& connection = LastConnection();
  EXPECT_EQ(connection.credential1, "credential-1");
  EXPECT_EQ(connection.reserved, 0U);
  EXPECT_EQ(connection.sink.lock().get(), &Notices());

  const auto padded = [](std::string text) { return text.append(256 - text.size(), '\0'); };
  const auto& info = connection.connectInfo;
  const std::pair<const char*, const char*> texts[] = {
      {info.sessionIdText, "session-1"}, {info.identityText, "phone-1"},
      {info.versionText, "1.13.0"},      {info.auxText, ""},
      {connection.videoInfo.text1, ""},  {connection.videoInfo.text2, ""}};
  for (const auto& [text, expected] : texts) EXPECT_EQ(std::string(text, 256), padded(expected));
  const auto& [format, width, height, frameRate, bitRate] = connection.videoInfo.videoParam;
  const auto& fixed = connection.defaultParam;
  const auto& [enabled, interval, useWss, last] = connection.systemParam;
  EXPECT_THAT((std::vector<std::int64_t>{info.clientKind, info.initNumber, info.streamKind, info.reserved}),
              ElementsAre(3, 4, 2, 0));
  EXPECT_THAT((std::vector<std::uint32_t>{format, width, height, frameRate, bitRate}),
              ElementsAre(265U, 640U, 480U, 25U, 999U));
  EXPECT_THAT((std::vector<std::int32_t>{fixed.value1, fixed.value2, fixed.value3, fixed.value4}),
              ElementsAre(1, 48000, 2, 0));
  EXPECT_THAT((std::vector<std::int32_t>{enabled, interval, useWss, last}), ElementsAre(0, 12345, 0, 0));
}

TEST_F(WebSocketSetup, ATextThatDoesNotFitIsRefusedAndNotCut) {
  const std::tuple<std::size_t, std::size_t, bool> cases[] = {
      {255, 255, true}, {256, 10, false}, {10, 256, false}, {5000, 10, false}};
  for (const auto& [sessionLength, targetLength, fits] : cases) {
    const std::string target(targetLength, 't');
    targetId = target.c_str();
    Request();
    Grant(MakeInfo(std::string(sessionLength, 's')));
    EXPECT_THAT(Take(), Contains("notice.OnStatus(60701001, web socket init failed)").Times(fits ? 0 : 1));
    EXPECT_EQ(CommandsAreOpen(), fits);
    ASSERT_EQ(Services().connections.size(), 1U) << "only what fits is tried";
    EXPECT_EQ(std::string(LastConnection().connectInfo.sessionIdText).size(), 255U);
    EXPECT_EQ(std::string(LastConnection().connectInfo.identityText).size(), 255U);
    ReleaseAndForget();
  }
}

}  // namespace
}  // namespace library_test
