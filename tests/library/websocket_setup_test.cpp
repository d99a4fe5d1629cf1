// What CreateWS is given, and what happens when no connection comes of it.
#include "tests/library/library_test.h"

namespace library_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

struct WebSocketSetup : LibraryTest {};

TEST_F(WebSocketSetup, TheAddressIsSchemeDomainAndPort) {
  struct {
    bool useWss;
    const char* domain;
    std::int32_t port;
    const char* url;
  } const cases[] = {{true, "10.0.0.7", 8443, "wss://10.0.0.7:8443"},
                     {false, "phone.example", 80, "ws://phone.example:80"},
                     {true, "", 0, "wss://:0"},
                     {false, "h", 1234567, "ws://h:1234567"}};
  for (const auto& [useWss, domain, port, url] : cases) {
    system.useWss = useWss;
    InstanceInfo info = MakeInfo();
    info.endpoints.webSocketDomain = domain;
    info.endpoints.webSocketPort = port;
    Connect(info);
    EXPECT_EQ(LastConnection().url, url);
    controller->ReleasePhoneConnect();
    Services().sessionCache.clear();
  }
}

TEST_F(WebSocketSetup, TheRecordsCarryIdentityVideoAndSystemParameters) {
  modeFlag = 4;
  video = {265, 640, 480, 25, 999};
  system.wsOptionEnabled = false;
  system.wsOptionInterval = 12345;
  system.useWss = false;
  Connect();
  const fakes::CreatedConnection& connection = LastConnection();
  EXPECT_EQ(connection.credential1, "credential-1");
  EXPECT_EQ(connection.reserved, 0U);
  EXPECT_EQ(connection.sink.lock().get(), &Notices());

  const auto padded = [](std::string text) { return text.append(256 - text.size(), '\0'); };
  const auto& info = connection.connectInfo;
  EXPECT_EQ(std::string(info.sessionIdText, 256), padded("session-1"));
  EXPECT_EQ(std::string(info.identityText, 256), padded("phone-1"));
  EXPECT_EQ(std::string(info.versionText, 256), padded("1.13.0"));
  EXPECT_EQ(std::string(info.auxText, 256), padded(""));
  EXPECT_EQ(std::string(connection.videoInfo.text1, 256), padded(""));
  EXPECT_EQ(std::string(connection.videoInfo.text2, 256), padded(""));
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

const Calls kFailure = {"log60 [phone-1]Init WS failed;Error code [60701001]",
                        "notice.OnStatus(60701001, web socket init failed)", "collect.Report(0, 0, 60701001, , )"};

TEST_F(WebSocketSetup, AFailureIsReportedOnceAndALaterSessionMayConnect) {
  InitReady();
  ConnectMiss();
  Services().createWsFails = true;
  Grant();
  const Calls calls = Take();
  ASSERT_GT(calls.size(), 5U);
  EXPECT_EQ(calls[1], "wsManager.CreateWS(wss://10.0.0.7:8443)");
  EXPECT_EQ(Calls(calls.begin() + 2, calls.begin() + 5), kFailure);
  EXPECT_THAT(calls, Contains(StartsWith("notice.OnIspList"))) << "the session is handled all the same";
  EXPECT_EQ(controller->SendInReq17(1), -1);

  Services().createWsFails = false;
  Grant();
  EXPECT_EQ(controller->SendInReq17(1), 0);
}

TEST_F(WebSocketSetup, ATextThatDoesNotFitIsRefusedAndNotCut) {
  struct {
    std::size_t sessionId;
    std::size_t targetId;
    bool fits;
  } const cases[] = {{255, 255, true}, {256, 10, false}, {10, 256, false}, {5000, 10, false}};
  for (const auto& [sessionLength, targetLength, fits] : cases) {
    const std::string target(targetLength, 't');
    targetId = target.c_str();
    InitReady();
    ConnectMiss();
    InstanceInfo info = MakeInfo(std::string(sessionLength, 's'));
    Grant(info);
    const Calls calls = Take();
    if (fits) {
      EXPECT_EQ(LastConnection().connectInfo.sessionIdText, info.sessionId);
      EXPECT_EQ(LastConnection().connectInfo.identityText, target);
    } else {
      EXPECT_THAT(calls, Not(Contains(StartsWith("wsManager.CreateWS"))));
      EXPECT_THAT(calls, Contains(kFailure[1]));
      EXPECT_THAT(calls, Contains(kFailure[2]));
      EXPECT_EQ(controller->SendInReq17(1), -1);
    }
    controller->ReleasePhoneConnect();
    Services().sessionCache.clear();
  }
}

}  // namespace
}  // namespace library_test
