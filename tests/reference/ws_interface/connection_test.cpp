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
    connection->Start();
    reactor->RunTasks();
  }
  ~ConnectionTest() override {
    connection->Close();
    reactor->RunTasks();
  }

  TransportSink& Net() { return reactor->transport->Sink(); }
  void Open() {
    Net().OnResolved();
    Net().OnOpen();
  }
  void Receive(const std::string& text) { Net().OnText(text); }
  void OpenAndGrant() {
    Open();
    Receive(kGrant);
    reactor->transport->FinishWrites();
  }
  // The messages on the wire that follow the hand-shake.
  Lines Commands() {
    reactor->RunTasks();
    reactor->transport->FinishWrites();
    return {Written().begin() + 2, Written().end()};
  }
  const Lines& Written() const { return reactor->transport->written; }
  std::string LastLine() { return sink->Lines().back(); }

  std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
  std::shared_ptr<FakeReactor> reactor = std::make_shared<FakeReactor>();
  std::shared_ptr<Connection> connection;
};

TEST_F(ConnectionTest, AConnectionReportsItsStepsInOrder) {
  sink->formatChoice = 265;
  OpenAndGrant();
  Receive(kPlayAnswer);
  Net().OnBinary(Frame(7));
  Net().OnBinary(Frame(8));
  Receive(R"({"type":"error","code":60103013,"message":"session expired"})");

  EXPECT_EQ(sink->Lines(), (Lines{"state 1", "step 5", "step 0", "auth 0 0 0 264,265", "state 2",
                                  "play 1 2 3 4 5 6 7 8 9 10", "frame 7 9 1 264", "error 60103013 session expired"}));
  EXPECT_EQ(Written(),
            (Lines{R"({"clientKind":3,"credential1":"user","initNumber":0,"sessionId":"s-1","streamKind":2,)"
                   R"("targetId":"phone-1","type":"auth","version":"1.13.0"})",
                   R"({"bitRate":2048,"frameRate":30,"height":1280,"type":"play","videoFormat":265,"width":720})"}));
  EXPECT_FALSE(reactor->delay);
}

TEST_F(ConnectionTest, ARefusedConnectionIsReportedAndNotTriedAgain) {
  Open();
  Receive(R"({"type":"authRsp","code":7,"message":"no"})");
  EXPECT_EQ(sink->Lines(), (Lines{"state 1", "step 5", "step 0", "error 7 no", "state 0"}));
  EXPECT_TRUE(reactor->transport->closed);
  EXPECT_FALSE(reactor->delay);
  EXPECT_EQ(connection->SendDummyReq(), kNotConnected);
}

// That each operation sends its own slot and arguments is seen where a cloud is at the other end.
TEST_F(ConnectionTest, WhatCannotBeSentIsRefusedAndTheRestIsWrittenAsItIs) {
  OpenAndGrant();
  for (const char* text : {"\x80", "\xC0\xAF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82", "\xFF",
                           static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(connection->SendReq6(text, "x"), kBadArgument) << testing::PrintToString(text);
    EXPECT_EQ(connection->SetSessionId(text), kBadArgument);
  }
  const std::string longest(kMaxTextSize, 'x');
  EXPECT_EQ(connection->SendReq8((longest + "x").c_str()), kTextTooLong);
  EXPECT_EQ(connection->SendReq5(0, std::numeric_limits<float>::infinity(), 0, 0), kBadArgument);
  EXPECT_EQ(connection->SendReq8(longest.c_str()), kTaken);
  EXPECT_EQ(connection->SendReq4(0.1F, -2, 3.25F, 16777216, 1e-45F, 3.4028235e38F, 0, 1e20F), kTaken);
  EXPECT_EQ(connection->SendReq6("a\"b", "\n\xC3\xBC \xE2\x82\xAC \xF0\x9F\x98\x80 \xF4\x8F\xBF\xBF"), kTaken);
  EXPECT_EQ(Commands(),
            (Lines{R"({"type":"command","slot":8,"args":[")" + longest + "\"]}",
                   R"({"type":"command","slot":4,"args":[0.1,-2,3.25,16777216,1e-45,3.4028235e+38,0,1e+20]})",
                   R"({"type":"command","slot":6,"args":["a\"b","\n\u00fc \u20ac \ud83d\ude00 \udbff\udfff"]})"}));
}

TEST_F(ConnectionTest, CommandsAreTakenFromInsideTheConnectedNoticeOnUntilTheLoss) {
  std::int32_t insideAuth = 1, insideConnected = 1;
  sink->inside = [&](const std::string& line) {
    if (line.starts_with("auth")) insideAuth = connection->SendDummyReq();
    if (line == "state 2") insideConnected = connection->SendDummyReq();
  };
  Open();
  EXPECT_EQ(connection->SendDummyReq(), kNotConnected);
  Receive(kGrant);
  EXPECT_EQ(insideAuth, kNotConnected);
  EXPECT_EQ(insideConnected, kTaken);
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
  OpenAndGrant();
  for (std::size_t sent = 0; sent < Outbox::kMaxMessages; ++sent) ASSERT_EQ(connection->SendDummyReq(), kTaken) << sent;
  EXPECT_EQ(connection->SendDummyReq(), kQueueFull);
  EXPECT_EQ(Commands().size(), Outbox::kMaxMessages);
  EXPECT_EQ(connection->SendDummyReq(), kTaken);
  EXPECT_EQ(Commands().size(), Outbox::kMaxMessages + 1);

  const std::string text(kMaxTextSize, 'x');
  std::size_t bytes = 0;
  while (bytes <= Outbox::kMaxBytes && connection->SendReq7(text.c_str()) == kTaken) bytes += text.size();
  EXPECT_LE(bytes, Outbox::kMaxBytes);
  EXPECT_GT(bytes, Outbox::kMaxBytes - 16 * text.size());
}

TEST_F(ConnectionTest, AFailedAttemptIsRepeatedAfterAPauseThatGrowsUntilTheNextSuccess) {
  milliseconds limit = Backoff::kFirstLimit;
  milliseconds longest{};
  for (int attempt = 1; attempt <= 40; ++attempt) {
    EXPECT_EQ(LastLine(), "state 1");
    Net().OnLost("refused");
    EXPECT_EQ(LastLine(), "state 0");
    ASSERT_TRUE(reactor->delay);
    EXPECT_LE(*reactor->delay, limit);
    longest = std::max(longest, *reactor->delay);
    limit = std::min(limit * 2, Backoff::kLastLimit);
    reactor->Expire();
  }
  EXPECT_GT(longest, milliseconds(1000));

  OpenAndGrant();
  Net().OnLost("gone");
  EXPECT_LE(*reactor->delay, Backoff::kFirstLimit);
  reactor->Expire();
  Open();
  EXPECT_EQ(Written().size(), 1U) << "the new connection begins with auth";
}

TEST_F(ConnectionTest, AnOverdueAnswerAndAMessageOutOfPlaceOrMalformedCostTheConnection) {
  const auto isOverdue = [this] {
    EXPECT_EQ(reactor->delay, milliseconds(3000));
    reactor->Expire();
  };
  const std::function<void()> faults[] = {
      isOverdue,
      [&] { Open(), isOverdue(); },
      [&] { OpenAndGrant(), isOverdue(); },
      [this] { Open(), Receive(kPlayAnswer); },
      [this] { Open(), Receive(R"({"type":"notice","slot":5,"args":[]})"); },
      [this] { Open(), Receive(R"({"type":"error","code":1})"); },
      [this] { OpenAndGrant(), Receive(kGrant); },
      [this] { OpenAndGrant(), Receive("{"); },
      [this] { OpenAndGrant(), Net().OnBinary(Frame(0)); },
      [this] { OpenAndGrant(), Receive(kPlayAnswer), Net().OnBinary({}); },
  };
  for (const auto& fault : faults) {
    EXPECT_EQ(LastLine(), "state 1");
    fault();
    EXPECT_EQ(LastLine(), "state 0");
    EXPECT_TRUE(reactor->transport->closed);
    reactor->Expire();
  }
}

TEST_F(ConnectionTest, ARenewedSessionAndGrantedParametersAreThoseOfTheNextConnection) {
  const std::string renewed = R"({"sessionId":"s-2","type":"session"})";
  EXPECT_EQ(connection->SetSessionId("s-0"), kTaken);
  Open();
  EXPECT_NE(Written()[0].find(R"("sessionId":"s-0")"), std::string::npos);
  // Too late for this authentication, so it follows behind play.
  EXPECT_EQ(connection->SetSessionId("s-2"), kTaken);
  Receive(kGrant);
  EXPECT_EQ((reactor->transport->FinishWrites(), Commands()), Lines{renewed});
  EXPECT_EQ(connection->SetSessionId("s-3"), kTaken);
  EXPECT_EQ(Commands().size(), 2U);
  Receive(R"({"type":"notice","slot":11,"args":[0,0,60,4096,1080,1920]})");
  Receive(R"({"type":"notice","slot":11,"args":[-1,0,1,1,1,1]})");
  Net().OnLost("gone");
  reactor->Expire();
  OpenAndGrant();
  EXPECT_NE(Written()[0].find(R"("sessionId":"s-3")"), std::string::npos);
  EXPECT_EQ(Written()[1],
            R"({"bitRate":4096,"frameRate":60,"height":1920,"type":"play","videoFormat":264,"width":1080})");
  EXPECT_EQ(Commands(), Lines{});
}

TEST_F(ConnectionTest, AConnectionWhoseSinkIsGoneEnds) {
  OpenAndGrant();
  sink.reset();
  Receive(kPlayAnswer);
  EXPECT_TRUE(reactor->transport->closed);
  EXPECT_FALSE(reactor->delay);
}

TEST_F(ConnectionTest, AThrowingNoticeDoesNotStopTheConnection) {
  sink->inside = [](const std::string&) { throw std::runtime_error("from the sink"); };
  OpenAndGrant();
  EXPECT_EQ(LastLine(), "state 2");
}

}  // namespace
}  // namespace reference::ws
