// The sequence of a connection, without sockets.
#include "reference/ws_interface/connection.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/reference/ws_interface/fake_reactor.h"
#include "tests/reference/ws_interface/recording_sink.h"

namespace reference::ws {
namespace {

using Lines = std::vector<std::string>;
using std::chrono::milliseconds;

constexpr const char* kGrant = R"({"type":"authRsp","code":0,"message":"success","formats":"264,265"})";
constexpr const char* kPlayAnswer = R"({"type":"playRsp","values":[1,2,3,4,5,6,7,8,9,10]})";

std::vector<std::uint8_t> Frame(std::uint8_t sequence) {
  return {0, 0, 0, 0, 0, 0, 0, sequence, 0, 0, 0, 0, 0, 0, 0, 9, 0, 0, 1, 8, 0xFF};
}

struct ConnectionTest : testing::Test {
  ConnectionTest() {
    ConnectionSettings settings;
    settings.endpoint = *ParseWebSocketUrl("ws://phone:1");
    settings.auth = {"user", "s-1", "phone-1", "1.13.0", 3, 0, 2};
    settings.video = {264, 720, 1280, 30, 2048};
    settings.timeout = milliseconds(3000);
    connection = std::make_shared<Connection>(settings, sink, reactor);
  }
  ~ConnectionTest() override {
    connection->Close();
    reactor->RunTasks();
  }

  void Begin() {
    connection->Start();
    reactor->RunTasks();
  }
  TransportSink& Net() { return reactor->Last().Sink(); }
  void Open() {
    Net().OnResolved();
    Net().OnOpen();
  }
  void Receive(const std::string& text) { Net().OnText(text); }
  void OpenAndGrant() {
    Open();
    Receive(kGrant);
    reactor->Last().FinishWrites();
  }
  // The messages on the wire that follow the hand-shake.
  Lines Commands() {
    reactor->RunTasks();
    reactor->Last().FinishWrites();
    const Lines& written = reactor->Last().written;
    return {written.begin() + 2, written.end()};
  }
  std::string LastLine() { return sink->Lines().back(); }
  bool TimerRuns() const { return reactor->alarm->delay.has_value(); }

  std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
  std::shared_ptr<FakeReactor> reactor = std::make_shared<FakeReactor>();
  std::shared_ptr<Connection> connection;
};

TEST_F(ConnectionTest, AConnectionReportsItsStepsInOrder) {
  sink->formatChoice = 265;
  Begin();
  Open();
  Receive(kGrant);
  reactor->Last().FinishWrites();
  Receive(kPlayAnswer);
  Net().OnBinary(Frame(7));
  Net().OnBinary(Frame(8));
  Receive(R"({"type":"error","code":60103013,"message":"session expired"})");

  EXPECT_EQ(sink->Lines(), (Lines{"state 1", "step 5", "step 0", "auth 0 0 0 264,265", "state 2",
                                  "play 1 2 3 4 5 6 7 8 9 10", "frame 7 9 1 264", "error 60103013 session expired"}));
  EXPECT_EQ(reactor->Last().written,
            (Lines{R"({"clientKind":3,"credential1":"user","initNumber":0,"sessionId":"s-1","streamKind":2,)"
                   R"("targetId":"phone-1","type":"auth","version":"1.13.0"})",
                   R"({"bitRate":2048,"frameRate":30,"height":1280,"type":"play","videoFormat":265,"width":720})"}));
  EXPECT_FALSE(TimerRuns());
}

TEST_F(ConnectionTest, EachCommandIsWrittenWithItsSlotAndArguments) {
  Begin();
  OpenAndGrant();
  constexpr std::uint64_t kMax64 = std::numeric_limits<std::uint64_t>::max();
  const struct {
    std::int32_t result;
    const char* slotAndArguments;
  } cases[] = {
      {connection->SendReq2(1, kMax64), R"(2,"args":[1,18446744073709551615])"},
      {connection->SendReq3(1, 2, 3, -4), R"(3,"args":[1,2,3,-4])"},
      {connection->SendReq4(0.1F, -2, 3.25F, 16777216, 1e-45F, 3.4028235e38F, 0, 8),
       R"(4,"args":[0.1,-2,3.25,16777216,1e-45,3.4028235e+38,0,8])"},
      {connection->SendReq5(-1, 0.5F, 0.25F, 1e20F), R"(5,"args":[-1,0.5,0.25,1e+20])"},
      {connection->SendReq6("a\"b", "\n\xC3\xBC"), R"(6,"args":["a\"b","\n\u00fc"])"},
      {connection->SendReq7(""), R"(7,"args":[""])"},
      {connection->SendReq8("x"), R"(8,"args":["x"])"},
      {connection->SendReq9("x", 0), R"(9,"args":["x",0])"},
      {connection->SendReq10(1, 2), R"(10,"args":[1,2])"},
      {connection->SendReq11(1, 2, 3, 4), R"(11,"args":[1,2,3,4])"},
      {connection->SendMicParamReq(1, 48000, 2), R"(12,"args":[1,48000,2])"},
      {connection->SendReq13(1, 2), R"(13,"args":[1,2])"},
      {connection->SendCameraParamReq(264, 2, 3, 4, 5), R"(14,"args":[264,2,3,4,5])"},
      {connection->SendReq15(1, 2), R"(15,"args":[1,2])"},
      {connection->SendReq16(1, 2), R"(16,"args":[1,2])"},
      {connection->SendReq17(std::numeric_limits<std::int32_t>::min()), R"(17,"args":[-2147483648])"},
      {connection->SendDummyReq(), R"(18,"args":[])"},
  };
  const Lines written = Commands();
  ASSERT_EQ(written.size(), std::size(cases));
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(cases[i].result, kTaken) << cases[i].slotAndArguments;
    EXPECT_EQ(written[i], std::string(R"({"type":"command","slot":)") + cases[i].slotAndArguments + "}");
  }
}

TEST_F(ConnectionTest, AnArgumentThatCannotBeSentIsRefusedAndNothingWritten) {
  Begin();
  OpenAndGrant();
  EXPECT_EQ(connection->SendReq7(nullptr), kBadArgument);
  EXPECT_EQ(connection->SendReq6("\xFF", "x"), kBadArgument);
  EXPECT_EQ(connection->SendReq8(std::string(kMaxTextSize + 1, 'x').c_str()), kTextTooLong);
  EXPECT_EQ(connection->SendReq5(0, std::numeric_limits<float>::infinity(), 0, 0), kBadArgument);
  EXPECT_EQ(connection->SetSessionId(nullptr), kBadArgument);
  EXPECT_EQ(Commands(), Lines{});
}

TEST_F(ConnectionTest, CommandsAreTakenFromInsideTheConnectedNoticeOnUntilTheLoss) {
  std::int32_t insideAuth = 1, insideConnected = 1;
  sink->inside = [&](const std::string& line) {
    if (line.starts_with("auth")) insideAuth = connection->SendDummyReq();
    if (line == "state 2") insideConnected = connection->SendDummyReq();
  };
  EXPECT_EQ(connection->SendDummyReq(), kNotConnected);
  Begin();
  Open();
  EXPECT_EQ(connection->SendDummyReq(), kNotConnected);
  Receive(kGrant);
  EXPECT_EQ(insideAuth, kNotConnected);
  EXPECT_EQ(insideConnected, kTaken);
  reactor->Last().FinishWrites();
  EXPECT_EQ(Commands().size(), 1U);

  // What the lost connection has not sent is not sent on the next.
  EXPECT_EQ(connection->SendReq7("stale"), kTaken);
  Net().OnLost("gone");
  EXPECT_EQ(connection->SendDummyReq(), kNotConnected);
  sink->inside = nullptr;
  reactor->Expire();
  OpenAndGrant();
  EXPECT_EQ(Commands(), Lines{});
}

TEST_F(ConnectionTest, WhatASlowPeerLeavesUnsentIsBounded) {
  Begin();
  OpenAndGrant();
  std::size_t taken = 0;
  while (taken <= Outbox::kMaxMessages && connection->SendDummyReq() == kTaken) ++taken;
  EXPECT_EQ(taken, Outbox::kMaxMessages);
  EXPECT_EQ(connection->SendDummyReq(), kQueueFull);
  EXPECT_EQ(Commands().size(), taken);
  EXPECT_EQ(connection->SendDummyReq(), kTaken);
  EXPECT_EQ(Commands().size(), taken + 1);

  const std::string text(kMaxTextSize, 'x');
  std::size_t bytes = 0;
  while (bytes <= Outbox::kMaxBytes && connection->SendReq7(text.c_str()) == kTaken) bytes += text.size();
  EXPECT_LE(bytes, Outbox::kMaxBytes);
  EXPECT_GT(bytes, Outbox::kMaxBytes - 16 * text.size());
}

TEST_F(ConnectionTest, ARefusedAuthenticationIsReportedAndNotTriedAgain) {
  Begin();
  Open();
  Receive(R"({"type":"authRsp","code":60102029,"message":"occupied"})");
  EXPECT_EQ(sink->Lines(), (Lines{"state 1", "step 5", "step 0", "error 60102029 occupied", "state 0"}));
  EXPECT_TRUE(reactor->Last().closed);
  EXPECT_FALSE(TimerRuns());
  EXPECT_EQ(connection->SendDummyReq(), kNotConnected);
}

TEST_F(ConnectionTest, AFailedAttemptIsRepeatedAfterAPauseThatGrowsUntilTheNextSuccess) {
  Begin();
  milliseconds limit = Backoff::kFirstLimit;
  milliseconds longest{};
  for (int attempt = 1; attempt <= 40; ++attempt) {
    EXPECT_EQ(LastLine(), "state 1");
    Net().OnLost("refused");
    EXPECT_EQ(LastLine(), "state 0");
    ASSERT_TRUE(TimerRuns());
    EXPECT_LE(*reactor->alarm->delay, limit);
    longest = std::max(longest, *reactor->alarm->delay);
    limit = std::min(limit * 2, Backoff::kLastLimit);
    reactor->Expire();
  }
  EXPECT_GT(longest, milliseconds(1000));

  OpenAndGrant();
  Net().OnLost("gone");
  EXPECT_LE(*reactor->alarm->delay, Backoff::kFirstLimit);
  reactor->Expire();
  Open();
  EXPECT_EQ(reactor->Last().written.size(), 1U) << "the new connection begins with auth";
}

TEST_F(ConnectionTest, EachWaitOfAnAttemptIsBounded) {
  Begin();
  const std::vector<std::function<void()>> waits = {[] {}, [this] { Open(); }, [this] { OpenAndGrant(); }};
  for (const auto& reach : waits) {
    reach();
    ASSERT_TRUE(TimerRuns());
    EXPECT_EQ(*reactor->alarm->delay, milliseconds(3000));
    reactor->Expire();
    EXPECT_EQ(LastLine(), "state 0");
    EXPECT_TRUE(reactor->Last().closed);
    reactor->Expire();
    EXPECT_EQ(LastLine(), "state 1");
  }
}

TEST_F(ConnectionTest, AMessageOutOfPlaceOrMalformedCostsTheConnection) {
  Begin();
  const std::vector<std::function<void()>> faults = {
      [this] { Open(), Receive(kPlayAnswer); },
      [this] { Open(), Receive(R"({"type":"notice","slot":5,"args":[]})"); },
      [this] { Open(), Receive(R"({"type":"error","code":1})"); },
      [this] { OpenAndGrant(), Receive(kGrant); },
      [this] { OpenAndGrant(), Receive("{"); },
      [this] { OpenAndGrant(), Net().OnBinary(Frame(0)); },
      [this] { OpenAndGrant(), Receive(kPlayAnswer), Net().OnBinary({}); },
  };
  for (const auto& fault : faults) {
    fault();
    EXPECT_EQ(LastLine(), "state 0");
    reactor->Expire();
    EXPECT_EQ(LastLine(), "state 1");
  }
}

TEST_F(ConnectionTest, ARenewedSessionIsSentAndAuthenticatesFromThenOn) {
  const std::string renewed = R"({"sessionId":"s-2","type":"session"})";
  Begin();
  EXPECT_EQ(connection->SetSessionId("s-0"), kTaken);
  Open();
  EXPECT_NE(reactor->Last().written[0].find(R"("sessionId":"s-0")"), std::string::npos);
  // Too late for this authentication, so it follows behind play.
  EXPECT_EQ(connection->SetSessionId("s-2"), kTaken);
  Receive(kGrant);
  EXPECT_EQ((reactor->Last().FinishWrites(), Commands()), Lines{renewed});
  EXPECT_EQ(connection->SetSessionId("s-3"), kTaken);
  EXPECT_EQ(Commands().size(), 2U);
  Net().OnLost("gone");
  reactor->Expire();
  OpenAndGrant();
  EXPECT_NE(reactor->Last().written[0].find(R"("sessionId":"s-3")"), std::string::npos);
  EXPECT_EQ(Commands(), Lines{});
}

TEST_F(ConnectionTest, ARebuiltConnectionPlaysWithTheParametersInForce) {
  Begin();
  OpenAndGrant();
  Receive(R"({"type":"notice","slot":11,"args":[0,0,60,4096,1080,1920]})");
  Receive(R"({"type":"notice","slot":11,"args":[-1,0,1,1,1,1]})");
  Net().OnLost("gone");
  reactor->Expire();
  OpenAndGrant();
  EXPECT_EQ(reactor->Last().written[1],
            R"({"bitRate":4096,"frameRate":60,"height":1920,"type":"play","videoFormat":264,"width":1080})");
}

TEST_F(ConnectionTest, ClosedInsideANoticeItReportsNothingMore) {
  const Lines story = {"state 1", "step 5", "step 0", "auth 0 0 0 264,265", "state 2", "play 1 2 3 4 5 6 7 8 9 10",
                       "state 0"};
  for (const std::string& last : story) {
    sink = std::make_shared<RecordingSink>();
    connection = std::make_shared<Connection>(ConnectionSettings{}, sink, reactor);
    sink->inside = [&](const std::string& line) {
      if (line == last) connection->Close();
    };
    connection->Start();
    reactor->RunTasks();
    const std::vector<std::function<void()>> steps = {[this] { Net().OnResolved(); }, [this] { Net().OnOpen(); },
                                                      [this] { Receive(kGrant); }, [this] { Receive(kPlayAnswer); },
                                                      [this] { Net().OnLost("gone"); }};
    for (const auto& step : steps) {
      if (LastLine() != last) step();
    }
    reactor->RunTasks();
    EXPECT_EQ(LastLine(), last);
    EXPECT_FALSE(TimerRuns()) << last;
    EXPECT_TRUE(reactor->transports.empty() || reactor->Last().closed) << last;
  }
}

TEST_F(ConnectionTest, AConnectionWhoseSinkIsGoneEnds) {
  Begin();
  OpenAndGrant();
  sink.reset();
  Receive(kPlayAnswer);
  EXPECT_TRUE(reactor->Last().closed);
  EXPECT_FALSE(TimerRuns());
}

TEST_F(ConnectionTest, AThrowingNoticeDoesNotStopTheConnection) {
  sink->inside = [](const std::string&) { throw std::runtime_error("from the sink"); };
  Begin();
  OpenAndGrant();
  EXPECT_EQ(LastLine(), "state 2");
}

}  // namespace
}  // namespace reference::ws
