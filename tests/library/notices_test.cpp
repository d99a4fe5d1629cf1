// The notices of the WebSocket connection: states, steps, format choice, play, errors, first frame and relays.
#include "tests/library/transcript.h"

namespace library_test {
namespace {

struct NoticesOfTheConnection : Transcript {
  std::int32_t Choice(int preferred, const char* offered) {
    NewController();
    video.videoFormat = static_cast<std::uint32_t>(preferred);
    InitReady();
    controller->ReleasePhoneConnect();
    return Notices().OnAuthRsp(0, 0, 0, offered);
  }
};

TEST_F(NoticesOfTheConnection, AreCountedTimedReportedAndSent) {
  Say("Before Init, with nothing counted and nobody told.");
  STEP(Notices().OnConnectState(1));
  STEP(Notices().OnConnectState(0));
  STEP(Notices().OnFirstFrame(1, 2, 3, 4));
  STEP(Notices().OnFirstFrame(1, 2, 3, 4));

  Chapter("Connected.");
  Connect();
  STEP(Notices().OnConnectState(1));
  STEP(Notices().OnConnectState(1));
  STEP(Notices().OnConnectStep(3));
  STEP(Notices().OnConnectStep(5));
  STEP(Notices().OnConnectStep(0));
  STEP(Notices().OnConnectState(2));
  STEP(Notices().OnPlayRsp(1, 1234567890123, 3, 4, 5, 6, 7, 8, 9, 10));
  STEP(Notices().OnConnectState(0));
  STEP(Notices().OnConnectState(3));

  Say("\nOf the errors one triggers a refresh and one has a notice of its own.");
  STEP(Notices().OnErrorCode(60103013, "why"));
  STEP(Notices().OnErrorCode(60102029, "why"));
  STEP(Notices().OnErrorCode(123, "why"));
  STEP(Notices().OnErrorCode(0, "why"));

  Say("\nAccepted video parameters serve the next connection.");
  STEP(Notices().OnVideoParamRsp(1, 0, 11, 22, 333, 444));
  controller->ChangeIsp(1);
  STEP(LastConnection().records);
  STEP(Notices().OnVideoParamRsp(0, 0, 11, 22, 333, 444));
  controller->ChangeIsp(2);
  STEP(LastConnection().records);

  Say("\nReleased, there is no service to ask and nobody to tell.");
  controller->ReleasePhoneConnect();
  STEP(Notices().OnErrorCode(60103013, "why"));
  STEP(Notices().OnErrorCode(123, "why"));
}

TEST_F(NoticesOfTheConnection, LetTheFrontEndChooseTheFormatFromWhatWasOffered) {
  frontEnd->chosenFormat = 77;
  Connect();
  STEP(Notices().OnAuthRsp(1, 2, 3, nullptr));
  STEP(Notices().OnAuthRsp(1, 2, 3, "265,264"));
  STEP(Notices().OnAuthRsp(1, 2, 3, ""));
  STEP(Notices().OnAuthRsp(1, 2, 3, "265"));
  for (const char* const offered : {" 265, 264", "265 ,,264", ",265,", "2645,26,x", "265;264", "264,265"}) {
    StartOver();
    Connect();
    Step(std::string("offered \"") + offered + "\"", [&] { return Notices().OnAuthRsp(1, 2, 3, offered); });
  }

  Chapter("Without a notice the preference counts if it is offered.");
  STEP(Notices().OnAuthRsp(0, 0, 0, "265"));
  for (const auto& [preferred, offered] :
       {std::pair(265, "264,265"), {264, "264,265"}, {265, "264"}, {264, "265"}, {265, ""}}) {
    Say(std::to_string(preferred) + " of \"" + offered + "\": " + std::to_string(Choice(preferred, offered)));
  }
}

TEST_F(NoticesOfTheConnection, AFirstFrameCountsOncePerConnection) {
  Connect();
  STEP(Notices().OnFirstFrame(1, 2, 3, 4));
  STEP(Internal().RecordMilestone("recvFirstFrame", 5));
  STEP(Notices().OnFirstFrame(5, 6, 7, 8));
  Say("\nNo connect, but a disconnect and a release start anew.");
  STEP(Notices().OnConnectState(2));
  STEP(Notices().OnFirstFrame(1, 2, 3, 4));
  STEP(Notices().OnConnectState(0));
  STEP(Notices().OnFirstFrame(1, 2, 3, 4));
  ReleaseAndForget();
  Connect();
  STEP(Notices().OnFirstFrame(1, 2, 3, 4));

  Chapter("An internal controller leaves the message to its SDK.");
  controller = IQVInternalDataInterface::CreateInternalDataInterface();
  Connect();
  STEP(Notices().OnFirstFrame(1, 2, 3, 4));
}

TEST_F(NoticesOfTheConnection, AreRelayedWithTheirArgumentsOrToNobody) {
  for (const char* const when : {"Before there is a front end.", "Connected."}) {
    Say(when);
    if (when[0] == 'C') Connect();
    STEP(Notices().OnNotice5());
    STEP(Notices().OnNotice6("text"));
    STEP(Notices().OnNotice7());
    STEP(Notices().OnNotice8());
    STEP(Notices().OnNotice9(1, 2, 3, 4, 5));
    STEP(Notices().OnNotice10());
    STEP(Notices().OnVideoParamRsp(-1, 2, 3, 4, 5, 6));
    STEP(Notices().OnNotice12());
    STEP(Notices().OnNotice13(1, 2, 3, 4));
    STEP(Notices().OnNotice14());
    STEP(Notices().OnNotice15(), Notices().OnNotice16(), Notices().OnNotice17());
    STEP(Notices().OnNotice18(), Notices().OnNotice19(), Notices().OnNotice20());
    STEP(Notices().OnNotice23());
    STEP(Notices().OnNotice24());
    STEP(Notices().OnNotice25());
  }
  Chapter("A text goes back over the connection that stands when the front end has heard it.");
  Request();
  At("notice.OnNotice8", [this] { Grant(); });
  STEP(Notices().OnNotice6("text"));
  At("notice.OnNotice8", [this] { controller->ReleasePhoneConnect(); });
  STEP(Notices().OnNotice6("text"));
}

}  // namespace
}  // namespace library_test
