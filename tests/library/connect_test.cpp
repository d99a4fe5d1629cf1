// GetPhoneConnect with and without the session cache, and the answers of the HTTP service.
#include "session/session_cipher.h"
#include "tests/library/library_test.h"

namespace library_test {
namespace {

using pass_interface::RefreshSessionRsp;

const std::string kStart = "log0 [TimeConsumingFlag][phone-1] start; Begin GetPhoneConnect";
const std::string kLoad = "db.LoadSessionCache()";
const std::string kHandle = "log0 [TimeConsumingFlag][phone-1] HandlePhoneConnect; Begin connect ws";
const std::string kHit = "log20 [phone-1] Hit session cache";
const std::string kRequest = "pass.RequestPhoneConnect(phone-1, , , null)";
const std::string kCreate = "wsManager.CreateWS(wss://10.0.0.7:8443)";
const std::string kInsert = "collect.InsertInstanceInfo(phone-1, session-1, 1, websocket)";
const std::string kLines = "notice.OnIspList(1=one;2=two;, 2)";
const std::string kSave = "db.SaveSessionCache(9000000000000)";

struct PhoneConnect : LibraryTest {
  // Leaves a session of the same identity in the cache, as a connection before this one would.
  fakes::SessionRow& CacheSession() {
    StartOver();
    Connect();
    controller->ReleasePhoneConnect();
    NewController();
    InitReady();
    return Services().sessionCache.begin()->second;
  }
  Calls GetPhoneConnect() {
    EXPECT_EQ(controller->GetPhoneConnect(), 0);
    return Take();
  }
};

TEST_F(PhoneConnect, AMissAsksTheServiceWhoseSessionConnectsAndIsThenCached) {
  InitReady();
  const std::int64_t before = Now();
  EXPECT_THAT(GetPhoneConnect(), ElementsAre(kStart, kLoad, kRequest));
  EXPECT_GE(Services().minimumExpiry, before + 600000);
  EXPECT_LE(Services().minimumExpiry, Now() + 600000);
  EXPECT_THAT(Gathered().milestones, ElementsAre(testing::Key("startGetInstanceInfo")));

  Status atCreate;
  At("wsManager.CreateWS", [&] { atCreate = Gathered(); });
  Grant();
  EXPECT_THAT(Take(), ElementsAre(kHandle, kCreate, kInsert, kLines, "cipher.Encrypt", kSave));
  EXPECT_THAT(atCreate.milestones, Contains(testing::Key("startConnect"))) << "milestones precede the connection";
  EXPECT_EQ(atCreate.sessionId, "") << "the status follows it";
  const Status status = Gathered();
  EXPECT_THAT((Calls{status.sessionId, status.wsDomain, status.wsPort}), ElementsAre("session-1", "10.0.0.7", "8443"));
  EXPECT_THAT(status.milestones, ElementsAre(Pair("endGetInstanceInfo", IsNow()), Pair("startConnect", IsNow()),
                                             Pair("startGetInstanceInfo", IsNow())));
}

TEST_F(PhoneConnect, AHitConnectsWithoutTheService) {
  CacheSession();
  EXPECT_THAT(GetPhoneConnect(), ElementsAre(kStart, kLoad, "cipher.Decrypt", kHit, kHandle, kCreate, kInsert, kLines));
  EXPECT_TRUE(CommandsAreOpen());
  EXPECT_EQ(controller->GetPhoneConnect(), -1) << "a second connect is refused";
}

TEST_F(PhoneConnect, ACachedRowServesOnlyWhenItLastsTenMoreMinutesAndParses) {
  CacheSession().expiry = Now() + 11 * 60000;
  EXPECT_THAT(GetPhoneConnect(), Contains(kHit));
  CacheSession().expiry = Now() + 9 * 60000;
  EXPECT_THAT(GetPhoneConnect(), ElementsAre(kStart, kLoad, kRequest));
  CacheSession().cipherText = qv_data_interface::EncryptSessionText("{}", 2);
  Take();
  EXPECT_THAT(GetPhoneConnect(),
              ElementsAre(kStart, kLoad, "cipher.Decrypt", "log60 Json Get [root][sessionId] failed", kRequest));
}

TEST_F(PhoneConnect, ARecordWithoutCarrierLinesGivesAnEmptyListAndTheModeIsPassed) {
  modeFlag = 2;
  Request();
  InstanceInfo info = MakeInfo();
  info.subStreamInfoList.clear();
  Grant(info);
  EXPECT_THAT(Take(), ElementsAre(kHandle, kCreate, "collect.InsertInstanceInfo(phone-1, session-1, 0, websocket)",
                                  "notice.OnIspList(null, 0)", "cipher.Encrypt", kSave));
}

struct Answers : LibraryTest {
  template <class Record>
  std::shared_ptr<Record> Header(std::int32_t code) {
    auto record = std::make_shared<Record>();
    record->requestTag = "tag-9";
    record->code = code;
    record->message = "no phone";
    record->sessionId = "session-9";
    return record;
  }
  // Has the service bring an answer with this code, or without a record at all.
  Calls Bring(bool refresh, std::int32_t transport, std::uint32_t http, const std::int32_t* code) {
    if (refresh) {
      PassSink()->OnRefreshSessionRsp(transport, http, code ? Header<RefreshSessionRsp>(*code) : nullptr);
    } else {
      PassSink()->OnPhoneConnectRsp(transport, http, code ? Header<InstanceInfo>(*code) : nullptr);
    }
    return Take();
  }
};

TEST_F(Answers, AFailureIsLoggedReportedAndSentInThatOrder) {
  struct {
    bool refresh;
    std::int32_t transport;
    std::uint32_t http;
    std::int32_t code;
    std::string line;
    std::string told;
    std::string text;
  } const cases[] = {
      {false, 3, 500, 0, "GetPhoneConnect failed; Error code [60702001]", "60702001",
       "Http Req for phone-connect failed"},
      {false, 0, 500, 4004, "GetPhoneConnect get http code [500]; Error code[60702002]", "60702002",
       "Http Req for phone-connect can not get 200"},
      {false, 0, 200, 4004, "GetPhoneConnect get http code [4004][no phone]", "4004", "no phone"},
      {true, -3, 200, 0, "OnRefreshSessionRsp failed; Error code [60702003]", "60702003",
       "Http Req for refresh-session failed"},
      {true, 0, 404, 0, "OnRefreshSessionRsp get http code [404]; Error code [60702004]", "60702004",
       "Http Req for refresh-session can not get 200"},
      {true, 0, 200, -7, "OnRefreshSessionRsp get http code [-7][no phone]", "-7", "no phone"},
  };
  for (const auto& [refresh, transport, http, code, line, told, text] : cases) {
    StartOver();
    Connect();
    const bool refused = transport == 0 && http == 200;
    const std::string sent = std::string("collect.Report(0, ") + (refused ? "5, " : "0, ") + told;
    Calls expected = {"log60 [phone-1]" + line, "notice.OnStatus(" + told + ", " + text + ")"};
    Calls withoutRecord;
    if (!refused) withoutRecord = {expected[0], expected[1], sent + ", , )"};
    EXPECT_EQ(Bring(refresh, transport, http, nullptr), withoutRecord);
    if (refused) expected.emplace_back("wsManager.DestroyWS(1)");
    expected.push_back(sent + ", tag-9, )");
    EXPECT_EQ(Bring(refresh, transport, http, &code), expected);
    if (refused) {
      expected.erase(expected.begin() + 2);
      EXPECT_EQ(Bring(refresh, transport, http, &code), expected) << "nothing is left to destroy";
    }
    EXPECT_EQ(CommandsAreOpen(), !refused) << "only a refusal closes the connection";
    controller->ReleasePhoneConnect();
    EXPECT_EQ(Services().connections[0].timesDestroyed, 1);
  }
}

TEST_F(Answers, ARenewedSessionReachesConnectionStatusAndTheNextRefresh) {
  for (const bool connected : {true, false}) {
    StartOver();
    Request();
    if (connected) Grant();
    Take();
    const Status before = Gathered();
    const std::int32_t renewed = 0;
    // The cached row is not touched.
    EXPECT_EQ(Bring(true, 0, 200, &renewed), connected ? Calls{"ws.SetSessionId(session-9)"} : Calls());
    EXPECT_EQ(Gathered().sessionId, "session-9");
    EXPECT_EQ(Gathered().wsDomain, before.wsDomain);
    Notices().OnErrorCode(60103013, "expired");
    EXPECT_THAT(Take(), ElementsAre("pass.RequestRefreshSession(session-9, , 0)"));
  }
}

}  // namespace
}  // namespace library_test
