// A connection from GetPhoneConnect to the release: the session cache, the HTTP service's answers, what CreateWS is
// given, commands and changes of the line.
#include "session/session_cipher.h"
#include "tests/library/transcript.h"

namespace library_test {
namespace {

using pass_interface::RefreshSessionRsp;
using qv_data_interface::kIspCodeDefault;

struct Connection : Transcript {
  template <class Record>
  static std::shared_ptr<Record> Header(std::int32_t code, const char* session = "session-9") {
    auto record = std::make_shared<Record>();
    record->requestTag = "tag-9";
    record->code = code;
    record->message = "no phone";
    record->sessionId = session;
    return record;
  }
  void Connected(std::int32_t transport, std::uint32_t http, std::int32_t code) {
    PassSink()->OnPhoneConnectRsp(transport, http, Header<InstanceInfo>(code));
  }
  void Refreshed(std::int32_t transport, std::uint32_t http, std::int32_t code) {
    PassSink()->OnRefreshSessionRsp(transport, http, Header<RefreshSessionRsp>(code));
  }
  void WithoutRecord(std::int32_t transport, std::uint32_t http) {
    PassSink()->OnPhoneConnectRsp(transport, http, nullptr);
    PassSink()->OnRefreshSessionRsp(transport, http, nullptr);
  }
  fakes::SessionRow& Row() { return Services().sessionCache.begin()->second; }
  void Reinitialise() {
    controller->ReleasePhoneConnect();
    InitReady();
  }
  std::string CreatedWith(bool useWss, const std::string& domain, std::int32_t port) {
    ReleaseAndForget();
    system.useWss = useWss;
    InstanceInfo info = MakeInfo();
    info.endpoints = {"", 0, "", 0, domain, port};
    Connect(info);
    return LastConnection().url;
  }
};

TEST_F(Connection, FromAMissOrAHit) {
  InitReady();
  STEP(controller->GetPhoneConnect());
  STEP(When(Services().minimumExpiry - 600000));
  STEP(Grant());
  STEP(LastConnection().records);
  STEP(LastConnection().sink.lock().get() == &Notices());
  STEP(CommandsAreOpen());
  STEP(Grant(MakeInfo("session-22")));

  Say("\nA new controller finds the session in the cache.");
  controller->ReleasePhoneConnect();
  NewController();
  InitReady();
  STEP(controller->GetPhoneConnect());
  STEP(CommandsAreOpen());
  STEP(controller->GetPhoneConnect());

  Say("\nA row serves when it lasts ten more minutes and can be read.");
  Reinitialise();
  Row().expiry = Now() + 11 * 60000;
  STEP(controller->GetPhoneConnect());
  Reinitialise();
  Row().expiry = Now() + 9 * 60000;
  STEP(controller->GetPhoneConnect());
  Reinitialise();
  Row() = {qv_data_interface::EncryptSessionText("{}", 2), 9000000000000};
  STEP(controller->GetPhoneConnect());

  Chapter("A record without carrier lines.");
  modeFlag = 2;
  Request();
  InstanceInfo info = MakeInfo();
  info.subStreamInfoList.clear();
  STEP(Grant(info));
}

TEST_F(Connection, FailedAnswersAndRenewedSessions) {
  Connect();
  STEP(WithoutRecord(3, 500));
  STEP(WithoutRecord(0, 500));
  STEP(WithoutRecord(0, 200));
  STEP(Connected(3, 500, 0));
  STEP(Connected(0, 500, 4004));
  STEP(Refreshed(-3, 200, 0));
  STEP(Refreshed(0, 404, 0));
  STEP(CommandsAreOpen());
  Say("\nOnly a refusal closes the connection, and once.");
  STEP(Connected(0, 200, 4004));
  STEP(Connected(0, 200, 4004));
  STEP(CommandsAreOpen());
  Grant();
  STEP(CommandsAreOpen());
  STEP(Refreshed(0, 200, -7));
  STEP(CommandsAreOpen());

  Chapter("A renewed session reaches the connection, the status and the next refresh; the cached row stays.");
  Request();
  STEP(Refreshed(0, 200, 0));
  STEP(Notices().OnErrorCode(60103013, "expired"));
  STEP(Grant());
  STEP(Refreshed(0, 200, 0));
  STEP(Notices().OnErrorCode(60103013, "expired"));

  Say("\nOf two renewals at once the later one stays.");
  At("ws.SetSessionId", [] { PassSink()->OnRefreshSessionRsp(0, 200, Header<RefreshSessionRsp>(0, "session-10")); });
  STEP(Refreshed(0, 200, 0));

  Chapter("One that is renewed while its connection is being built reaches that connection, too.");
  Connect();
  At("wsManager.CreateWS", [this] { Refreshed(0, 200, 0); });
  STEP(controller->ChangeIsp(1));
  ReleaseAndForget();
  Request();
  At("wsManager.CreateWS", [this] { Refreshed(0, 200, 0); });
  STEP(Grant());
}

TEST_F(Connection, IsMadeWithTheRecordsOfItsInitAndWhollyOrNotAtAll) {
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
  STEP(LastConnection().records);
  Say("to " + CreatedWith(true, "", 0));
  Say("to " + CreatedWith(false, "h", 1234567));
  for (const auto& [session, target] : {std::pair(255, 255), {256, 10}, {10, 256}, {5000, 10}}) {
    ReleaseAndForget();
    const std::string longTarget(static_cast<std::size_t>(target), 't');
    targetId = longTarget.c_str();
    Connect(MakeInfo(std::string(static_cast<std::size_t>(session), 's')));
    Say("texts of " + std::to_string(session) + " and " + std::to_string(target) + " characters");
    STEP(Services().connections.size());
    STEP(CommandsAreOpen());
  }
  STEP(Services().connections[3].records);
}

struct Command {
  const char* text;
  std::int32_t (*send)(IQVDataInterface&);
};
#define COMMAND(...)                                    \
  {                                                     \
#__VA_ARGS__, [](auto& c) { return c.__VA_ARGS__; } \
  }

const Command kCommands[] = {
    COMMAND(SendInReq3(1, 2, ~0ULL, 4)),
    COMMAND(SendInReq3(1, 2, 3, -4)),
    COMMAND(SendInReq3(1, 2, 3, 0)),
    COMMAND(SendInReq4(1, 2)),
    COMMAND(SendInReq5(.5F, 1, 2, 3, 4, 5, 6, 7)),
    COMMAND(SendInReq6(-1, .5F, 2, 3)),
    COMMAND(SendInReq7("a", "")),
    COMMAND(SendInReq7(nullptr, "b")),
    COMMAND(SendInReq7("a", nullptr)),
    COMMAND(SendInReq8("a")),
    COMMAND(SendInReq8(nullptr)),
    COMMAND(SendInReq9("a")),
    COMMAND(SendInReq9(nullptr)),
    COMMAND(SendInReq10(1, 2)),
    COMMAND(SendInReq11(1, 2, 3, -4)),
    COMMAND(SendInMicParamReq(1, -2, 3)),
    COMMAND(SendInReq13(1, 2)),
    COMMAND(SendInCameraParamReq(264, 2, 3, 4, 5)),
    COMMAND(SendInCameraParamReq(265, 2, 3, 4, 5)),
    COMMAND(SendInReq15(1, 2)),
    COMMAND(SendInReq16(1, 2)),
    COMMAND(SendInReq17(-1)),
    {"SendDummyReq()",
     [](auto& c) { return dynamic_cast<qv_data_interface::IQVDataDummyReqInterface&>(c).SendDummyReq(); }},
};

TEST_F(Connection, CommandsReachItAndAreRefusedWithoutIt) {
  Connect();
  Services().commandResult = -77;
  for (const Command& command : kCommands) Step(command.text, [&] { return command.send(*controller); });

  const auto expectClosed = [this](const char* when) {
    Take();
    for (const Command& command : kCommands) EXPECT_EQ(command.send(*controller), -1) << command.text << when;
    EXPECT_THAT(Take(), Not(Contains(StartsWith("ws.")))) << when;
    EXPECT_EQ(controller->ChangeIsp(kIspCodeDefault), -1) << when;
    EXPECT_THAT(Take(), IsEmpty()) << when;
  };
  StartOver();
  expectClosed("before Init");
  InitReady();
  expectClosed("before GetPhoneConnect");
  Services().requestResult = 1;
  EXPECT_EQ(controller->GetPhoneConnect(), -1);
  expectClosed("after a refused request");
  Services().requestResult = 0;
  ConnectMiss();
  EXPECT_FALSE(CommandsAreOpen()) << "before the answer";
  Grant();
  controller->ReleasePhoneConnect();
  expectClosed("after a release");
}

TEST_F(Connection, ChangesItsLine) {
  Connect();
  STEP(controller->ChangeIsp(3));
  STEP(controller->ChangeIsp(kIspCodeDefault));
  STEP(controller->ChangeIsp(2));
  STEP(controller->ChangeIsp(2));
  STEP(controller->ChangeIsp(kIspCodeDefault));
  STEP(CommandsAreOpen());

  Say("\nA failed rebuild keeps the new line; there is no new attempt for it, but one for another line.");
  Services().createWsFails = true;
  STEP(controller->ChangeIsp(2));
  Services().createWsFails = false;
  STEP(controller->ChangeIsp(2));
  STEP(controller->ChangeIsp(1));

  Chapter("Of several entries of a line the last wins, and the choice outlives a release.");
  InstanceInfo info = MakeInfo();
  info.subStreamInfoList[0].ispCode = 2;
  Connect(info);
  STEP(controller->ChangeIsp(2));
  ReleaseAndForget();
  InitReady();
  ConnectMiss();
  STEP(Grant());
  STEP(controller->ChangeIsp(2));

  Say("\nBefore the answer no line of the last phone is taken.");
  ReleaseAndForget();
  targetId = "phone-2";
  Request();
  STEP(controller->ChangeIsp(1));
  STEP(controller->ChangeIsp(kIspCodeDefault));
  STEP(Grant());
  STEP(controller->ChangeIsp(1));
}

TEST_F(Connection, EndsInOrderAndOnce) {
  Connect();
  STEP(controller->ReleasePhoneConnect());
  STEP(frontEnd.use_count());
  STEP(controller->ReleasePhoneConnect());
  STEP(controller.reset());
  STEP(Services().sessionCache.size());

  Chapter("A controller that never connected stops the services; one that was never initialised has none.");
  InitReady();
  STEP(controller->ReleasePhoneConnect());
  NewController();
  STEP(controller.reset());

  Chapter("A session is not cached for the phone that the front end turns to in its notice.");
  Request();
  At("notice.OnIspList", [&] {
    targetId = "phone-2";
    controller->ReleasePhoneConnect();
    Init();
  });
  STEP(Grant());
  STEP(Services().liveRows.size());
  STEP(controller->GetPhoneConnect());
}

}  // namespace
}  // namespace library_test
