// GetPhoneConnect with and without the session cache, and the answers of the HTTP service.
#include "session/session_cipher.h"
#include "tests/library/library_test.h"

namespace library_test {
namespace {

using pass_interface::RefreshSessionRsp;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::string kStart = "log0 [TimeConsumingFlag][phone-1] start; Begin GetPhoneConnect";
const std::string kHandle = "log0 [TimeConsumingFlag][phone-1] HandlePhoneConnect; Begin connect ws";
const std::string kHit = "log20 [phone-1] Hit session cache";
const std::string kRequest = "pass.RequestPhoneConnect(phone-1, , , null)";

struct PhoneConnect : LibraryTest {
  // Leaves a session of the same identity in the cache, as a connection before this one would.
  void CacheSession() {
    Connect();
    controller->ReleasePhoneConnect();
    ASSERT_EQ(Services().sessionCache.size(), 1U);
    controller = qv_data_interface::IQVDataInterface::Create();
    InitReady();
  }
  static fakes::SessionRow& Row() { return Services().sessionCache.begin()->second; }
};

TEST_F(PhoneConnect, IsRefusedWithoutALineBeforeInit) {
  EXPECT_EQ(controller->GetPhoneConnect(), -1);
  EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(PhoneConnect, AMissAsksTheService) {
  InitReady();
  const std::int64_t before = Now();
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  EXPECT_THAT(Take(), ElementsAre(kStart, "db.LoadSessionCache()", kRequest));
  EXPECT_GE(Services().minimumExpiry, before + 600000);
  EXPECT_LE(Services().minimumExpiry, Now() + 600000);
  EXPECT_THAT(Gathered().milestones, ElementsAre(testing::Key("startGetInstanceInfo")));
}

TEST_F(PhoneConnect, AGrantedAnswerConnectsAndIsThenCached) {
  InitReady();
  ConnectMiss();
  Grant();
  EXPECT_THAT(Take(),
              ElementsAre(kHandle, "wsManager.CreateWS(wss://10.0.0.7:8443)",
                          "collect.InsertInstanceInfo(phone-1, session-1, 1, websocket)",
                          "notice.OnIspList(1=one;2=two;, 2)", "cipher.Encrypt", "db.SaveSessionCache(9000000000000)"));
  const Status status = Gathered();
  EXPECT_EQ(status.sessionId, "session-1");
  EXPECT_EQ(status.wsDomain, "10.0.0.7");
  EXPECT_EQ(status.wsPort, "8443");
  EXPECT_THAT(status.milestones, ElementsAre(testing::Key("endGetInstanceInfo"), testing::Key("startConnect"),
                                             testing::Key("startGetInstanceInfo")));
  for (const auto& [name, time] : status.milestones) EXPECT_NEAR(double(time), double(Now()), 60000) << name;
}

TEST_F(PhoneConnect, MilestonesPrecedeTheConnectionAndTheStatusFollowsIt) {
  InitReady();
  ConnectMiss();
  Status atCreate;
  At("wsManager.CreateWS", [&] { atCreate = Gathered(); });
  Grant();
  EXPECT_THAT(atCreate.milestones, Contains(testing::Key("startConnect")));
  EXPECT_EQ(atCreate.sessionId, "");
  EXPECT_STREQ(LastConnection().connectInfo.sessionIdText, "session-1");
}

TEST_F(PhoneConnect, AHitConnectsWithoutTheService) {
  CacheSession();
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  EXPECT_THAT(Take(), ElementsAre(kStart, "db.LoadSessionCache()", "cipher.Decrypt", kHit, kHandle,
                                  "wsManager.CreateWS(wss://10.0.0.7:8443)",
                                  "collect.InsertInstanceInfo(phone-1, session-1, 1, websocket)",
                                  "notice.OnIspList(1=one;2=two;, 2)"));
  EXPECT_EQ(controller->SendInReq17(1), 0) << "commands are open";
  EXPECT_EQ(controller->GetPhoneConnect(), -1) << "a second connect is refused";
}

TEST_F(PhoneConnect, ACachedRowServesOnlyWhenItLastsTenMoreMinutes) {
  CacheSession();
  Row().expiry = Now() + 9 * 60000;
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  EXPECT_THAT(Take(), ElementsAre(kStart, "db.LoadSessionCache()", kRequest));

  controller->ReleasePhoneConnect();
  InitReady();
  Row().expiry = Now() + 11 * 60000;
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  EXPECT_THAT(Take(), Contains(kHit));
}

TEST_F(PhoneConnect, ARowThatDoesNotDecipherOrParseCountsAsAMiss) {
  CacheSession();
  Row().cipherText.back() ^= 1;
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  Calls calls = Take();
  EXPECT_THAT(calls, Contains("log60 Aes256Decrypt Failed"));
  EXPECT_THAT(calls, Not(Contains(kHit)));
  EXPECT_EQ(calls.back(), kRequest);

  controller->ReleasePhoneConnect();
  InitReady();
  Row().cipherText = qv_data_interface::EncryptSessionText("{}", 2);
  Take();
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  EXPECT_THAT(Take(), ElementsAre(kStart, "db.LoadSessionCache()", "cipher.Decrypt",
                                  "log60 Json Get [root][sessionId] failed", kRequest));
}

TEST_F(PhoneConnect, WithoutACacheKeyTheDatabaseIsNeverAsked) {
  Services().encryptFails = true;
  EXPECT_EQ(Init(), 0);
  EXPECT_THAT(Take(), Contains("log60 Aes256Encrypt Failed"));
  Services().encryptFails = false;
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  Grant();
  EXPECT_THAT(Take(), Not(Contains(testing::AnyOf(StartsWith("db."), StartsWith("cipher.")))));
  EXPECT_EQ(Services().connections.size(), 1U);
}

TEST_F(PhoneConnect, ASessionThatCannotBeEncipheredIsUsedAndNotSaved) {
  InitReady();
  ConnectMiss();
  Services().encryptFails = true;
  Grant();
  const Calls calls = Take();
  EXPECT_EQ(calls.back(), "log60 Aes256Encrypt Failed");
  EXPECT_THAT(calls, Contains(StartsWith("wsManager.CreateWS")));
}

TEST_F(PhoneConnect, ARefusedRequestMayBeRepeated) {
  InitReady();
  Services().requestResult = 5;
  EXPECT_EQ(controller->GetPhoneConnect(), -1);
  EXPECT_THAT(Take(), ElementsAre(kStart, "db.LoadSessionCache()", kRequest, "log60 GetPhoneConnect failed"));
  EXPECT_EQ(controller->SendInReq17(1), -1) << "commands stay closed";
  Services().requestResult = 0;
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  Take();
  EXPECT_EQ(controller->GetPhoneConnect(), -1);
  EXPECT_THAT(Take(), ElementsAre(kStart)) << "a connect that is under way is not started again";
}

TEST_F(PhoneConnect, ASecondRecordUpdatesTheCollectorsRow) {
  Connect();
  Grant(MakeInfo("session-22"));
  EXPECT_THAT(Take(),
              ElementsAre(kHandle, "collect.UpdataInstanceSessionId(7, session-22, 10)",
                          "notice.OnIspList(1=one;2=two;, 2)", "cipher.Encrypt", "db.SaveSessionCache(9000000000000)"));
  EXPECT_EQ(Gathered().sessionId, "session-22");
}

TEST_F(PhoneConnect, CollectorFailuresAreLoggedAndStopNothing) {
  InitReady();
  ConnectMiss();
  Services().insertResult = -1;
  Grant();
  Calls calls = Take();
  EXPECT_THAT(calls, Contains("log60 InsertInstanceInfo failed"));
  EXPECT_THAT(calls, Contains(StartsWith("notice.OnIspList")));

  Services().insertResult = 0;
  Services().updateResult = -1;
  Grant();
  EXPECT_THAT(Take(), Contains(StartsWith("collect.InsertInstanceInfo"))) << "there is no row yet";
  Grant();
  calls = Take();
  EXPECT_THAT(calls, Contains("log60 UpdataInstanceSessionId failed"));
  EXPECT_THAT(calls, Contains(StartsWith("notice.OnIspList")));
}

TEST_F(PhoneConnect, WithoutACollectorTheConnectionIsMadeAllTheSame) {
  InitReady();
  ConnectMiss();
  Services().collectorMissing = true;
  Grant();
  EXPECT_THAT(Take(), ElementsAre(kHandle, StartsWith("wsManager.CreateWS"), StartsWith("notice.OnIspList"),
                                  "cipher.Encrypt", StartsWith("db.SaveSessionCache")));
}

TEST_F(PhoneConnect, ARecordWithoutCarrierLinesGivesAnEmptyList) {
  modeFlag = 2;
  InitReady();
  ConnectMiss();
  InstanceInfo info = MakeInfo();
  info.subStreamInfoList.clear();
  Grant(info);
  const Calls calls = Take();
  EXPECT_THAT(calls, Contains("notice.OnIspList(null, 0)"));
  EXPECT_THAT(calls, Contains("collect.InsertInstanceInfo(phone-1, session-1, 0, websocket)")) << "the mode is passed";
}

struct Answers : LibraryTest {
  template <class Record>
  static std::shared_ptr<Record> Header(std::int32_t code) {
    auto record = std::make_shared<Record>();
    record->requestTag = "tag-9";
    record->code = code;
    record->message = "no phone";
    record->sessionId = "session-9";
    return record;
  }
};

TEST_F(Answers, AFailureIsLoggedReportedAndSentInThatOrder) {
  struct {
    bool refresh;
    std::int32_t transport;
    std::uint32_t http;
    std::int32_t code;
    Calls calls;
  } const cases[] = {
      {false,
       3,
       500,
       0,
       {"log60 [phone-1]GetPhoneConnect failed; Error code [60702001]",
        "notice.OnStatus(60702001, Http Req for phone-connect failed)", "collect.Report(0, 0, 60702001, tag-9, )"}},
      {false,
       0,
       500,
       4004,
       {"log60 [phone-1]GetPhoneConnect get http code [500]; Error code[60702002]",
        "notice.OnStatus(60702002, Http Req for phone-connect can not get 200)",
        "collect.Report(0, 0, 60702002, tag-9, )"}},
      {false,
       0,
       200,
       4004,
       {"log60 [phone-1]GetPhoneConnect get http code [4004][no phone]", "notice.OnStatus(4004, no phone)",
        "wsManager.DestroyWS(1)", "collect.Report(0, 5, 4004, tag-9, )"}},
      {true,
       -3,
       200,
       0,
       {"log60 [phone-1]OnRefreshSessionRsp failed; Error code [60702003]",
        "notice.OnStatus(60702003, Http Req for refresh-session failed)", "collect.Report(0, 0, 60702003, tag-9, )"}},
      {true,
       0,
       404,
       0,
       {"log60 [phone-1]OnRefreshSessionRsp get http code [404]; Error code [60702004]",
        "notice.OnStatus(60702004, Http Req for refresh-session can not get 200)",
        "collect.Report(0, 0, 60702004, tag-9, )"}},
      {true,
       0,
       200,
       -7,
       {"log60 [phone-1]OnRefreshSessionRsp get http code [-7][no phone]", "notice.OnStatus(-7, no phone)",
        "wsManager.DestroyWS(1)", "collect.Report(0, 5, -7, tag-9, )"}},
  };
  for (const auto& [refresh, transport, http, code, calls] : cases) {
    fakes::ResetServices();
    controller = qv_data_interface::IQVDataInterface::Create();
    Connect();
    if (refresh) {
      PassSink()->OnRefreshSessionRsp(transport, http, Header<RefreshSessionRsp>(code));
    } else {
      PassSink()->OnPhoneConnectRsp(transport, http, Header<InstanceInfo>(code));
    }
    EXPECT_THAT(Take(), ElementsAreArray(calls));
    const bool closed = Services().LiveConnections() == 0;
    EXPECT_EQ(closed, transport == 0 && http == 200) << "only a refusal closes the connection";
    EXPECT_EQ(controller->SendInReq17(1), closed ? -1 : 0);
    controller->ReleasePhoneConnect();
    EXPECT_EQ(Services().connections[0].timesDestroyed, 1);
  }
}

TEST_F(Answers, ARefusalBeforeAnyConnectionDestroysNothing) {
  InitReady();
  ConnectMiss();
  PassSink()->OnPhoneConnectRsp(0, 200, Header<InstanceInfo>(1));
  EXPECT_THAT(Take(),
              ElementsAre(StartsWith("log60"), "notice.OnStatus(1, no phone)", "collect.Report(0, 5, 1, tag-9, )"));
}

TEST_F(Answers, AnAbsentRecordIsToleratedAndCountsAsAnEmptyTag) {
  Connect();
  PassSink()->OnPhoneConnectRsp(0, 200, nullptr);
  PassSink()->OnRefreshSessionRsp(0, 200, nullptr);
  EXPECT_THAT(Take(), IsEmpty());
  PassSink()->OnPhoneConnectRsp(1, 0, nullptr);
  PassSink()->OnPhoneConnectRsp(0, 500, nullptr);
  PassSink()->OnRefreshSessionRsp(1, 0, nullptr);
  PassSink()->OnRefreshSessionRsp(0, 500, nullptr);
  const Calls calls = Take();
  for (const char* code : {"60702001", "60702002", "60702003", "60702004"}) {
    EXPECT_THAT(calls, Contains(std::string("collect.Report(0, 0, ") + code + ", , )"));
  }
}

TEST_F(Answers, ARenewedSessionReachesConnectionStatusAndTheNextRefresh) {
  Connect();
  const Status before = Gathered();
  PassSink()->OnRefreshSessionRsp(0, 200, Header<RefreshSessionRsp>(0));
  EXPECT_THAT(Take(), ElementsAre("ws.SetSessionId(session-9)")) << "the cached row is not touched";
  EXPECT_EQ(Gathered().sessionId, "session-9");
  EXPECT_EQ(Gathered().wsDomain, before.wsDomain);
  WsSink()->OnErrorCode(60103013, "expired");
  EXPECT_THAT(Take(), ElementsAre("pass.RequestRefreshSession(session-9, , 0)"));
}

TEST_F(Answers, ASessionIsRenewedWithoutAConnectionToo) {
  InitReady();
  ConnectMiss();
  PassSink()->OnRefreshSessionRsp(0, 200, Header<RefreshSessionRsp>(0));
  EXPECT_THAT(Take(), IsEmpty());
  EXPECT_EQ(Gathered().sessionId, "session-9");
  Notices().OnErrorCode(60103013, "expired");
  EXPECT_THAT(Take(), ElementsAre("pass.RequestRefreshSession(session-9, , 0)"));
}

}  // namespace
}  // namespace library_test
