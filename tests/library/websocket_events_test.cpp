// The notices of the WebSocket connection: states, steps, format choice, play, errors, first frame and relays.
#include "tests/library/library_test.h"

namespace library_test {
namespace {

struct WebSocketEvents : LibraryTest {
  // The milestones beside those of the connect.
  Calls NewMilestones() {
    Calls names;
    for (const auto& [name, time] : Gathered().milestones) {
      if (name.find("InstanceInfo") == std::string::npos && name != "startConnect") names.push_back(name);
      EXPECT_THAT(time, IsNow()) << name;
    }
    return names;
  }
};

const std::string kFirstFrame = "log0 [TimeConsumingFlag][phone-1]Recv First Frame; SendMessageCollect";

TEST_F(WebSocketEvents, StatesAreCountedLoggedReportedAndSent) {
  Connect();
  const auto sink = WsSink();
  sink->OnConnectState(1);
  EXPECT_THAT(Take(),
              ElementsAre("log0 [phone-1] Connect connecting;Error code [60701003]",
                          "notice.OnStatus(60701003, web socket connecting)", "collect.Report(0, 3, 60701003, , )"));
  EXPECT_EQ(LastStatus().connectingCount, 1);
  EXPECT_THAT(LastStatus().connectingTime, IsNow());
  sink->OnConnectState(1);
  EXPECT_EQ(LastStatus().connectingCount, 2);
  Take();

  sink->OnConnectState(2);
  EXPECT_THAT(Take(), ElementsAre("ws.SendReq17(9)", "log0 [phone-1] Connect connected;Error code [0]",
                                  "notice.OnStatus(0, success)", "collect.Report(1, 3, , , )"));
  EXPECT_EQ(LastStatus().connectedFlag, 1);
  EXPECT_THAT(LastStatus().connectedTime, IsNow());

  sink->OnConnectState(0);
  EXPECT_THAT(Take(),
              ElementsAre("log0 [phone-1] Connect disconnected;Error code [60701002]",
                          "notice.OnStatus(60701002, web socket disconnect)", "collect.Report(0, 6, 60701002, , )"));
  EXPECT_EQ(LastStatus().connectedFlag, 0);
  EXPECT_THAT(LastStatus().disconnectedTime, IsNow());
  EXPECT_THAT(LastStatus().connectedTime, IsNow()) << "stays";

  sink->OnConnectState(3);
  EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(WebSocketEvents, StepsAreMilestones) {
  Connect();
  WsSink()->OnConnectStep(3);
  EXPECT_THAT(NewMilestones(), IsEmpty());
  WsSink()->OnConnectStep(5);
  EXPECT_THAT(NewMilestones(), ElementsAre("dnsParseSucc"));
  WsSink()->OnConnectStep(0);
  EXPECT_THAT(NewMilestones(), ElementsAre("connectSucc", "dnsParseSucc", "startAuth"));
  EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(WebSocketEvents, TheFrontEndChoosesTheFormatFromEverythingOfferedSoFarOfWhichOnlyExactFormatsCount) {
  const std::vector<std::pair<const char*, const char*>> cases[] = {
      {{nullptr, "264"}, {"265,264", "264 265 264"}, {"", "264 265 264"}, {"265", "264 265 264 265"}},
      {{" 265, 264", "264"}, {"265 ,,264", "264 264"}, {",265,", "264 264 265"}},
      {{"2645,26,x", "264"}},
      {{"265;264", "264"}, {"264,265", "264 264 265"}}};
  frontEnd->chosenFormat = 77;
  for (const auto& offers : cases) {
    StartOver();
    Connect();
    for (const auto& [offered, list] : offers) {
      EXPECT_EQ(WsSink()->OnAuthRsp(1, 2, 3, offered), 77);
      EXPECT_THAT(Take(), ElementsAre(std::string("notice.OnChooseVideoFormat(") + list + ")",
                                      "log20 [phone-1]Choose video format[77]"));
    }
  }
  EXPECT_THAT(NewMilestones(), ElementsAre("onAuthR", "sendPlay"));
}

TEST_F(WebSocketEvents, WithoutANoticeThePreferenceOr264IsChosen) {
  EXPECT_EQ(Notices().OnAuthRsp(0, 0, 0, "265"), 264) << "no preference stored";
  const std::tuple<std::uint32_t, const char*, std::int32_t> cases[] = {
      {265, "264,265", 265}, {264, "264,265", 264}, {265, "264", 264}, {264, "265", 264}, {265, "", 264}};
  for (const auto& [preference, offered, choice] : cases) {
    NewController();
    video.videoFormat = preference;
    InitReady();
    controller->ReleasePhoneConnect();
    EXPECT_EQ(Notices().OnAuthRsp(0, 0, 0, offered), choice) << preference << " of " << offered;
  }
}

TEST_F(WebSocketEvents, APlayAnswerIsTimedSentAndRelayed) {
  Connect();
  WsSink()->OnPlayRsp(1, 1234567890123, 3, 4, 5, 6, 7, 8, 9, 10);
  EXPECT_THAT(Take(),
              ElementsAre("collect.Report(1, 1, , , )", "notice.OnPlayRsp(1, 1234567890123, 3, 4, 5, 6, 7, 8, 9, 10)"));
  EXPECT_THAT(LastStatus().playResponseTime, IsNow());
  EXPECT_THAT(NewMilestones(), ElementsAre("onPlayR"));
}

TEST_F(WebSocketEvents, ErrorCodesAreReportedRelayedOrTriggerARefresh) {
  Connect();
  const std::pair<std::uint32_t, Calls> cases[] = {
      {60103013, {"pass.RequestRefreshSession(session-1, , 0)"}},
      {60102029, {"notice.OnServiceCode(60102029, why)", "collect.Report(0, 5, 60102029, , )"}},
      {123, {"log60 [phone-1] Get error code [123]", "notice.OnStatus(123, why)", "collect.Report(0, 5, 123, , )"}},
      {0, {"log60 [phone-1] Get error code [0]", "notice.OnStatus(0, why)", "collect.Report(0, 5, , , )"}},
  };
  for (const auto& [code, calls] : cases) {
    WsSink()->OnErrorCode(code, "why");
    EXPECT_THAT(Take(), ElementsAreArray(calls));
  }
  controller->ReleasePhoneConnect();
  Take();
  Notices().OnErrorCode(60103013, "why");
  EXPECT_THAT(Take(), IsEmpty()) << "no service is left to ask";
  Notices().OnErrorCode(123, "why");
  EXPECT_THAT(Take(), ElementsAre("collect.Report(0, 5, 123, , )")) << "no notice, no line";
}

TEST_F(WebSocketEvents, AFirstFrameCountsOncePerConnection) {
  Connect();
  const Calls first = {kFirstFrame, "collect.Report(1, 2, , , )", "notice.OnFirstFrame(1, 2, 3, 4)"};
  const auto sink = WsSink();
  sink->OnFirstFrame(1, 2, 3, 4);
  EXPECT_EQ(Take(), first);
  EXPECT_THAT(LastStatus().firstFrameTime, IsNow());
  EXPECT_EQ(LastStatus().milestones.count("recvFirstFrame"), 1U) << "recorded before it is sent";

  Internal().RecordMilestone("recvFirstFrame", 5);
  sink->OnFirstFrame(5, 6, 7, 8);
  EXPECT_THAT(Take(), ElementsAre("notice.OnFirstFrame(5, 6, 7, 8)"));
  EXPECT_EQ(Gathered().milestones["recvFirstFrame"], 5);

  sink->OnConnectState(2);
  Take();
  sink->OnFirstFrame(1, 2, 3, 4);
  EXPECT_THAT(Take(), ElementsAre("notice.OnFirstFrame(1, 2, 3, 4)")) << "only a disconnect starts anew";
  sink->OnConnectState(0);
  Take();
  sink->OnFirstFrame(1, 2, 3, 4);
  EXPECT_EQ(Take(), first);
  EXPECT_NE(Gathered().milestones["recvFirstFrame"], 5);

  ReleaseAndForget();
  Connect();
  WsSink()->OnFirstFrame(1, 2, 3, 4);
  EXPECT_EQ(Take(), first) << "a release starts anew too";
}

TEST_F(WebSocketEvents, AnInternalControllerLeavesTheFirstFrameMessageToItsSdk) {
  controller = IQVInternalDataInterface::CreateInternalDataInterface();
  Connect();
  WsSink()->OnFirstFrame(1, 2, 3, 4);
  EXPECT_THAT(Take(), ElementsAre(kFirstFrame, "notice.OnFirstFrame(1, 2, 3, 4)"));
  EXPECT_THAT(NewMilestones(), ElementsAre("recvFirstFrame"));
}

const std::pair<void (*)(IWSInterfaceNotic&), const char*> kRelays[] = {
    {[](auto& s) { s.OnNotice5(); }, "notice.OnNotice7()"},
    {[](auto& s) { s.OnNotice6("text"); }, "notice.OnNotice8(text) ws.SendReq9(text, 0)"},
    {[](auto& s) { s.OnNotice7(); }, "notice.OnNotice9()"},
    {[](auto& s) { s.OnNotice8(); }, "notice.OnNotice10()"},
    {[](auto& s) { s.OnNotice9(1, 2, 3, 4, 5); }, "notice.OnNotice12(1, 2, 3, 4, 5)"},
    {[](auto& s) { s.OnNotice10(); }, "notice.OnNotice13()"},
    {[](auto& s) { s.OnVideoParamRsp(-1, 2, 3, 4, 5, 6); }, "notice.OnVideoParamRsp(-1, 2, 3, 4, 5, 6)"},
    {[](auto& s) { s.OnNotice12(); }, "notice.OnNotice15()"},
    {[](auto& s) { s.OnNotice13(1, 2, 3, 4); }, "notice.OnNotice16(1, 2, 3, 4)"},
    {[](auto& s) { s.OnNotice14(); }, "notice.OnNotice19()"},
    {[](auto& s) { s.OnNotice15(), s.OnNotice16(), s.OnNotice17(); }, ""},
    {[](auto& s) { s.OnNotice18(), s.OnNotice19(), s.OnNotice20(); }, ""},
    {[](auto& s) { s.OnNotice23(); }, "notice.OnNotice6()"},
    {[](auto& s) { s.OnNotice24(); }, "notice.OnNotice11()"},
    {[](auto& s) { s.OnNotice25(); }, "notice.OnNotice17()"},
};

TEST_F(WebSocketEvents, RelaysReachTheFrontEndWithTheirArgumentsOrNobody) {
  const auto all = [](const Calls& calls) {
    std::string text;
    for (const std::string& call : calls) text += (text.empty() ? "" : " ") + call;
    return text;
  };
  for (const auto& [notify, calls] : kRelays) notify(Notices());
  EXPECT_THAT(Take(), IsEmpty()) << "there is no front end yet";
  Connect();
  for (const auto& [notify, calls] : kRelays) {
    notify(*WsSink());
    EXPECT_EQ(all(Take()), calls);
  }
}

TEST_F(WebSocketEvents, AcceptedVideoParametersServeTheNextConnection) {
  Connect();
  WsSink()->OnVideoParamRsp(1, 0, 11, 22, 333, 444);
  ASSERT_EQ(controller->ChangeIsp(1), 0);
  EXPECT_EQ(LastConnection().videoInfo.videoParam.width, 720) << "refused parameters change nothing";
  WsSink()->OnVideoParamRsp(0, 0, 11, 22, 333, 444);
  ASSERT_EQ(controller->ChangeIsp(2), 0);
  const auto& [format, width, height, frameRate, bitRate] = LastConnection().videoInfo.videoParam;
  EXPECT_THAT((std::vector<std::uint32_t>{format, frameRate, bitRate, width, height}),
              ElementsAre(264U, 11U, 22U, 333U, 444U));
}

TEST_F(WebSocketEvents, BeforeInitNoticesLogAndSendWhatTheyCan) {
  Notices().OnConnectState(1);
  EXPECT_THAT(Take(), ElementsAre("log0 [] Connect connecting;Error code [60701003]"))
      << "nothing was counted, so nothing is sent";
  Notices().OnConnectState(0);
  EXPECT_THAT(Take(), ElementsAre("log0 [] Connect disconnected;Error code [60701002]"));
  for (int frame = 1; frame <= 2; ++frame) {
    Notices().OnFirstFrame(1, 2, 3, 4);
    EXPECT_THAT(Take(), ElementsAre("log0 [TimeConsumingFlag][]Recv First Frame; SendMessageCollect",
                                    "collect.Report(1, 2, , , )"))
        << "frame " << frame;
  }
}

}  // namespace
}  // namespace library_test
