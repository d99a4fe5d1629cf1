// The commands of the front end and the change of the carrier line.
#include <algorithm>
#include <limits>

#include "tests/library/library_test.h"

namespace library_test {
namespace {

using qv_data_interface::IQVDataDummyReqInterface;
using qv_data_interface::IQVDataInterface;
using qv_data_interface::kIspCodeDefault;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

struct Command {
  std::int32_t (*send)(IQVDataInterface&);
  Calls lines;
  const char* call;
};

const Command kCommands[] = {
    {[](auto& c) { return c.SendInReq3(1, 2, 0xffffffffffffffff, 4); },
     {},
     "ws.SendReq3(1, 2, 18446744073709551615, 4)"},
    {[](auto& c) { return c.SendInReq3(1, 2, 3, -4); }, {}, "ws.SendReq3(1, 2, 3, -4)"},
    {[](auto& c) { return c.SendInReq4(1, 2); }, {}, "ws.SendReq2(1, 2)"},
    {[](auto& c) { return c.SendInReq5(.5F, 1, 2, 3, 4, 5, 6, 7.25F); },
     {},
     "ws.SendReq4(0.5, 1, 2, 3, 4, 5, 6, 7.25)"},
    {[](auto& c) { return c.SendInReq6(-1, .5F, 2, 3); }, {}, "ws.SendReq5(-1, 0.5, 2, 3)"},
    {[](auto& c) { return c.SendInReq7("a", ""); }, {}, "ws.SendReq6(a, )"},
    {[](auto& c) { return c.SendInReq8("a"); }, {}, "ws.SendReq7(a)"},
    {[](auto& c) { return c.SendInReq9("a"); }, {}, "ws.SendReq8(a)"},
    {[](auto& c) { return c.SendInReq10(1, 2); }, {}, "ws.SendReq10(1, 2)"},
    {[](auto& c) { return c.SendInReq11(1, 2, 3, -4); }, {}, "ws.SendReq11(1, 2, 3, -4)"},
    {[](auto& c) { return c.SendInMicParamReq(1, -2, 3); },
     {"log0 SendInMicParamReq[1] [-2] [3]"},
     "ws.SendMicParamReq(1, -2, 3)"},
    {[](auto& c) { return c.SendInReq13(1, 2); }, {}, "ws.SendReq13(1, 2)"},
    {[](auto& c) { return c.SendInCameraParamReq(264, 2, 3, 4, 5); },
     {"log0 SendInCameraParamReq[264] [2] [3]"},
     "ws.SendCameraParamReq(264, 2, 3, 4, 5)"},
    {[](auto& c) { return c.SendInReq15(1, 2); }, {}, "ws.SendReq15(1, 2)"},
    {[](auto& c) { return c.SendInReq16(1, 2); }, {}, "ws.SendReq16(1, 2)"},
    {[](auto& c) { return c.SendInReq17(-1); }, {}, "ws.SendReq17(-1)"},
    {[](auto& c) { return dynamic_cast<IQVDataDummyReqInterface&>(c).SendDummyReq(); }, {}, "ws.SendDummyReq()"},
};

// Refused whatever the state is.
const Command kMisuses[] = {
    {[](auto& c) { return c.SendInReq3(1, 2, 3, 0); }, {}, nullptr},
    {[](auto& c) { return c.SendInReq7(nullptr, "b"); }, {}, nullptr},
    {[](auto& c) { return c.SendInReq7("a", nullptr); }, {}, nullptr},
    {[](auto& c) { return c.SendInReq8(nullptr); }, {}, nullptr},
    {[](auto& c) { return c.SendInReq9(nullptr); }, {}, nullptr},
    {[](auto& c) { return c.SendInCameraParamReq(265, 2, 3, 4, 5); }, {"log60 Camera do not support H265"}, nullptr},
};

struct Commands : LibraryTest {
  void ExpectRefused(const Command& command, const char* when) {
    EXPECT_EQ(command.send(*controller), -1) << when;
    EXPECT_THAT(Take(), ElementsAreArray(command.lines)) << when;
  }
  void ExpectClosed(const char* when) {
    for (const Command& command : kCommands) ExpectRefused(command, when);
    for (const Command& command : kMisuses) ExpectRefused(command, when);
    EXPECT_EQ(controller->ChangeIsp(kIspCodeDefault), -1) << when;
    EXPECT_THAT(Take(), IsEmpty()) << when;
  }
  std::string Url() { return LastConnection().url; }
};

TEST_F(Commands, ReachTheConnectionAndReturnItsResult) {
  Connect();
  for (const std::int32_t result : {0, -77, std::numeric_limits<std::int32_t>::max()}) {
    Services().commandResult = result;
    for (const Command& command : kCommands) {
      EXPECT_EQ(command.send(*controller), result) << command.call;
      Calls expected = command.lines;
      expected.emplace_back(command.call);
      EXPECT_EQ(Take(), expected);
    }
  }
  for (const Command& command : kMisuses) ExpectRefused(command, "connected");
}

TEST_F(Commands, AreRefusedWhileTheGateIsClosed) {
  ExpectClosed("before Init");
  InitReady();
  ExpectClosed("before GetPhoneConnect");
  Services().requestResult = 1;
  EXPECT_EQ(controller->GetPhoneConnect(), -1);
  Take();
  ExpectClosed("after a refused request");
  Services().requestResult = 0;
  ConnectMiss();
  Grant();
  controller->ReleasePhoneConnect();
  Take();
  ExpectClosed("after a release");
}

TEST_F(Commands, AreRefusedWithoutAConnection) {
  InitReady();
  ConnectMiss();
  for (const Command& command : kCommands) ExpectRefused(command, "before the answer");
  Services().createWsFails = true;
  Grant();
  Take();
  for (const Command& command : kCommands) ExpectRefused(command, "without a connection");
}

TEST_F(Commands, AChangeOfTheLineRebuildsTheConnectionOnItsEndpointsAndBack) {
  Connect();
  EXPECT_EQ(controller->ChangeIsp(2), 0);
  EXPECT_THAT(Take(), ElementsAre("log20 Change Isp [2][two]", "wsManager.DestroyWS(1)",
                                  "wsManager.CreateWS(wss://10.2.0.1:82)"));
  EXPECT_EQ(controller->ChangeIsp(2), 0);
  EXPECT_THAT(Take(), IsEmpty()) << "the current line is no change";
  EXPECT_EQ(controller->ChangeIsp(kIspCodeDefault), 0);
  EXPECT_THAT(Take(), ElementsAre("log20 Change Isp [65536][DEFAULT]", "wsManager.DestroyWS(2)",
                                  "wsManager.CreateWS(wss://10.0.0.7:8443)"));
  EXPECT_EQ(controller->SendInReq17(1), 0);
  EXPECT_EQ(Services().LiveConnections(), 1);
}

TEST_F(Commands, AnUnknownLineChangesNothing) {
  Connect();
  EXPECT_EQ(controller->ChangeIsp(3), -1);
  EXPECT_THAT(Take(), ElementsAre("log60 Can not find ispInfo with IspCode[3]"));
  EXPECT_EQ(controller->ChangeIsp(kIspCodeDefault), 0);
  EXPECT_THAT(Take(), IsEmpty()) << "the default line is still the current one";
}

TEST_F(Commands, OfSeveralEntriesOfALineTheLastWinsAndEachIsLogged) {
  InstanceInfo info = MakeInfo();
  info.subStreamInfoList[0].ispCode = 2;
  Connect(info);
  EXPECT_EQ(controller->ChangeIsp(2), 0);
  EXPECT_THAT(Take(), ElementsAre("log20 Change Isp [2][one]", "log20 Change Isp [2][two]", "wsManager.DestroyWS(1)",
                                  "wsManager.CreateWS(wss://10.2.0.1:82)"));
}

TEST_F(Commands, AFailedRebuildKeepsTheNewLineAndAnotherLineTriesAgain) {
  Connect();
  Services().createWsFails = true;
  EXPECT_EQ(controller->ChangeIsp(2), -1);
  EXPECT_THAT(
      Take(),
      ElementsAre("log20 Change Isp [2][two]", "wsManager.DestroyWS(1)", "wsManager.CreateWS(wss://10.2.0.1:82)",
                  "log60 [phone-1]Init WS failed;Error code [60701001]",
                  "notice.OnStatus(60701001, web socket init failed)", "collect.Report(0, 0, 60701001, , )"));
  Services().createWsFails = false;
  EXPECT_EQ(controller->ChangeIsp(2), 0);
  EXPECT_THAT(Take(), IsEmpty()) << "no new attempt for the same line";
  EXPECT_EQ(controller->ChangeIsp(1), 0);
  EXPECT_THAT(Take(), ElementsAre("log20 Change Isp [1][one]", "wsManager.CreateWS(wss://10.1.0.1:81)"));
}

TEST_F(Commands, TheChosenLineOutlivesARelease) {
  Connect();
  ASSERT_EQ(controller->ChangeIsp(2), 0);
  controller->ReleasePhoneConnect();
  InitReady();
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
  EXPECT_EQ(Url(), "wss://10.0.0.7:8443");
  Take();
  EXPECT_EQ(controller->ChangeIsp(2), 0);
  EXPECT_THAT(Take(), IsEmpty());
}

}  // namespace
}  // namespace library_test
