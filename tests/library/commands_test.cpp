// The commands of the front end and the change of the carrier line.
#include "tests/library/library_test.h"

namespace library_test {
namespace {

using qv_data_interface::IQVDataDummyReqInterface;
using qv_data_interface::kIspCodeDefault;

struct Command {
  std::int32_t (*send)(IQVDataInterface&);
  const char* call;
  Calls lines = {};
};

const Command kCommands[] = {
    {[](auto& c) { return c.SendInReq3(1, 2, ~0ULL, 4); }, "ws.SendReq3(1, 2, 18446744073709551615, 4)"},
    {[](auto& c) { return c.SendInReq3(1, 2, 3, -4); }, "ws.SendReq3(1, 2, 3, -4)"},
    {[](auto& c) { return c.SendInReq4(1, 2); }, "ws.SendReq2(1, 2)"},
    {[](auto& c) { return c.SendInReq5(.5F, 1, 2, 3, 4, 5, 6, 7); }, "ws.SendReq4(0.5, 1, 2, 3, 4, 5, 6, 7)"},
    {[](auto& c) { return c.SendInReq6(-1, .5F, 2, 3); }, "ws.SendReq5(-1, 0.5, 2, 3)"},
    {[](auto& c) { return c.SendInReq7("a", ""); }, "ws.SendReq6(a, )"},
    {[](auto& c) { return c.SendInReq8("a"); }, "ws.SendReq7(a)"},
    {[](auto& c) { return c.SendInReq9("a"); }, "ws.SendReq8(a)"},
    {[](auto& c) { return c.SendInReq10(1, 2); }, "ws.SendReq10(1, 2)"},
    {[](auto& c) { return c.SendInReq11(1, 2, 3, -4); }, "ws.SendReq11(1, 2, 3, -4)"},
    {[](auto& c) { return c.SendInMicParamReq(1, -2, 3); },
     "ws.SendMicParamReq(1, -2, 3)",
     {"log0 SendInMicParamReq[1] [-2] [3]"}},
    {[](auto& c) { return c.SendInReq13(1, 2); }, "ws.SendReq13(1, 2)"},
    {[](auto& c) { return c.SendInCameraParamReq(264, 2, 3, 4, 5); },
     "ws.SendCameraParamReq(264, 2, 3, 4, 5)",
     {"log0 SendInCameraParamReq[264] [2] [3]"}},
    {[](auto& c) { return c.SendInReq15(1, 2); }, "ws.SendReq15(1, 2)"},
    {[](auto& c) { return c.SendInReq16(1, 2); }, "ws.SendReq16(1, 2)"},
    {[](auto& c) { return c.SendInReq17(-1); }, "ws.SendReq17(-1)"},
    {[](auto& c) { return dynamic_cast<IQVDataDummyReqInterface&>(c).SendDummyReq(); }, "ws.SendDummyReq()"},
};

// Refused whatever the state is.
const Command kMisuses[] = {
    {[](auto& c) { return c.SendInReq3(1, 2, 3, 0); }, "no count"},
    {[](auto& c) { return c.SendInReq7(nullptr, "b"); }, "no text"},
    {[](auto& c) { return c.SendInReq7("a", nullptr); }, "no text"},
    {[](auto& c) { return c.SendInReq8(nullptr); }, "no text"},
    {[](auto& c) { return c.SendInReq9(nullptr); }, "no text"},
    {[](auto& c) { return c.SendInCameraParamReq(265, 2, 3, 4, 5); }, "H265", {"log60 Camera do not support H265"}},
};

struct Commands : LibraryTest {
  template <class Table>
  void ExpectRefused(const Table& commands, const char* when) {
    for (const Command& command : commands) {
      EXPECT_EQ(command.send(*controller), -1) << command.call << " " << when;
      EXPECT_EQ(Take(), command.lines) << when;
    }
  }
  void ExpectClosed(const char* when) {
    Take();
    ExpectRefused(kCommands, when);
    ExpectRefused(kMisuses, when);
    EXPECT_EQ(controller->ChangeIsp(kIspCodeDefault), -1) << when;
    EXPECT_THAT(Take(), IsEmpty()) << when;
  }
};

TEST_F(Commands, ReachTheConnectionAndReturnItsResult) {
  Connect();
  Services().commandResult = -77;
  for (const Command& command : kCommands) {
    EXPECT_EQ(command.send(*controller), -77) << command.call;
    Calls expected = command.lines;
    expected.emplace_back(command.call);
    EXPECT_EQ(Take(), expected);
  }
  ExpectRefused(kMisuses, "connected");
}

TEST_F(Commands, AreRefusedWhileTheGateIsClosedOrThereIsNoConnection) {
  ExpectClosed("before Init");
  InitReady();
  ExpectClosed("before GetPhoneConnect");
  Services().requestResult = 1;
  EXPECT_EQ(controller->GetPhoneConnect(), -1);
  ExpectClosed("after a refused request");
  Services().requestResult = 0;
  ConnectMiss();
  ExpectRefused(kCommands, "before the answer");
  Services().createWsFails = true;
  Grant();
  Take();
  ExpectRefused(kCommands, "without a connection");
  Services().createWsFails = false;
  Grant();
  controller->ReleasePhoneConnect();
  ExpectClosed("after a release");
}

TEST_F(Commands, AChangeOfTheLineRebuildsTheConnectionOnItsEndpointsAndBack) {
  Connect();
  EXPECT_EQ(controller->ChangeIsp(3), -1);
  EXPECT_THAT(Take(), ElementsAre("log60 Can not find ispInfo with IspCode[3]"));
  EXPECT_EQ(controller->ChangeIsp(kIspCodeDefault), 0);
  EXPECT_THAT(Take(), IsEmpty()) << "the default line is still the current one";
  EXPECT_EQ(controller->ChangeIsp(2), 0);
  EXPECT_THAT(Take(), ElementsAre("log20 Change Isp [2][two]", "wsManager.DestroyWS(1)",
                                  "wsManager.CreateWS(wss://10.2.0.1:82)"));
  EXPECT_EQ(controller->ChangeIsp(2), 0);
  EXPECT_THAT(Take(), IsEmpty()) << "the current line is no change";
  EXPECT_EQ(controller->ChangeIsp(kIspCodeDefault), 0);
  EXPECT_THAT(Take(), ElementsAre("log20 Change Isp [65536][DEFAULT]", "wsManager.DestroyWS(2)",
                                  "wsManager.CreateWS(wss://10.0.0.7:8443)"));
  EXPECT_TRUE(CommandsAreOpen());
  EXPECT_EQ(Services().LiveConnections(), 1);
}

TEST_F(Commands, AFailedRebuildKeepsTheNewLineAndAnotherLineTriesAgain) {
  Connect();
  Services().createWsFails = true;
  EXPECT_EQ(controller->ChangeIsp(2), -1);
  const Calls calls = Take();
  EXPECT_EQ(calls[2], "wsManager.CreateWS(wss://10.2.0.1:82)");
  EXPECT_EQ(calls.back(), "collect.Report(0, 0, 60701001, , )");
  Services().createWsFails = false;
  EXPECT_EQ(controller->ChangeIsp(2), 0);
  EXPECT_THAT(Take(), IsEmpty()) << "no new attempt for the same line";
  EXPECT_EQ(controller->ChangeIsp(1), 0);
  EXPECT_THAT(Take(), ElementsAre("log20 Change Isp [1][one]", "wsManager.CreateWS(wss://10.1.0.1:81)"));
}

TEST_F(Commands, OfSeveralEntriesOfALineTheLastWinsAndTheChoiceOutlivesARelease) {
  InstanceInfo info = MakeInfo();
  info.subStreamInfoList[0].ispCode = 2;
  Connect(info);
  EXPECT_EQ(controller->ChangeIsp(2), 0);
  EXPECT_THAT(Take(), ElementsAre("log20 Change Isp [2][one]", "log20 Change Isp [2][two]", "wsManager.DestroyWS(1)",
                                  "wsManager.CreateWS(wss://10.2.0.1:82)"));
  ReleaseAndForget();
  Connect();
  EXPECT_EQ(LastConnection().url, "wss://10.0.0.7:8443");
  EXPECT_EQ(controller->ChangeIsp(2), 0);
  EXPECT_THAT(Take(), IsEmpty());
}

}  // namespace
}  // namespace library_test
