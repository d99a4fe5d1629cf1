// The sequence of a connection, without sockets.
#include "reference/ws_interface/connection.h"

#include <limits>

#include "tests/reference/ws_interface/fake_reactor.h"
#include "tests/reference/ws_interface/recording_sink.h"
#include "tests/support/transcribed.h"

namespace reference::ws {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kTimeout{3000};
constexpr const char* kGrant = R"({"type":"authRsp","code":0,"message":"success","formats":"264,265"})";
constexpr const char* kPlayAnswer = R"({"type":"playRsp","values":[1,2,3,4,5,6,7,8,9,10]})";

struct ConnectionTest : tests::Transcribed<> {
  ConnectionTest() {
    ConnectionSettings settings;
    settings.endpoint = *ParseWebSocketUrl("ws://phone:1");
    settings.auth = {"user", "s-1", "phone-1", "1.13.0", 3, 0, 2};
    settings.video = {264, 720, 1280, 30, 2048};
    settings.timeout = kTimeout;
    connection = std::make_shared<Connection>(settings, sink, reactor);
    sink->inside = [this](const std::string& line) {
      Indent("told " + line);
      if (inside) inside(line);
    };
    connection->Start();
    reactor->RunTasks();
  }
  ~ConnectionTest() override {
    connection->Close();
    reactor->RunTasks();
  }

  // Each step ends with everything written, and says for what the connection then waits.
  void AfterStep() override {
    reactor->RunTasks();
    reactor->transport->FinishWrites();
    Indent(!reactor->delay ? "wait for nothing" : reactor->delay == kTimeout ? "wait for an answer" : "pause");
  }
  void Note(const std::string& line) {
    const bool isLong = line.size() > 300;
    Indent(isLong ? line.substr(0, 50) + "... of " + std::to_string(line.size()) + " characters" : line);
  }
  TransportSink& Net() { return reactor->transport->Sink(); }
  void Open() {
    Net().OnResolved();
    Net().OnOpen();
  }
  void Receive(const std::string& message) { Net().OnText(message); }
  void OpenAndGrant() {
    Open();
    Receive(kGrant);
    reactor->transport->FinishWrites();
  }
  void Frame(std::uint8_t sequence) {
    const std::uint8_t bytes[] = {0, 0, 0, 0, 0, 0, 0, sequence, 0, 0, 0, 0, 0, 0, 0, 9, 0, 0, 1, 8, 0xFF};
    Net().OnBinary(bytes);
  }
  void Expire() { reactor->Expire(); }
  void Lose() { Net().OnLost("gone"); }

  std::function<void(const std::string& line)> inside;
  std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
  std::shared_ptr<FakeReactor> reactor = std::make_shared<FakeReactor>([this](const auto& line) { Note(line); });
  std::shared_ptr<Connection> connection;
};

TEST_F(ConnectionTest, AConnectionReportsItsStepsInOrder) {
  sink->formatChoice = 265;
  STEP(Open());
  STEP(Receive(kGrant));
  STEP(Receive(kPlayAnswer));
  STEP(Frame(7));
  STEP(Frame(8));
  STEP(Receive(R"({"type":"error","code":60103013,"message":"session expired"})"));
}

TEST_F(ConnectionTest, ARefusedConnectionIsReportedAndNotTriedAgain) {
  STEP(Open());
  STEP(Receive(R"({"type":"authRsp","code":7,"message":"no"})"));
  EXPECT_EQ(connection->SendDummyReq(), kNotConnected);
}

// That each operation sends its own slot and arguments is seen where a cloud is at the other end.
TEST_F(ConnectionTest, WhatCannotBeSentIsRefusedAndTheRestIsWrittenAsItIs) {
  OpenAndGrant();
  for (const char* bad : {"\x80", "\xC0\xAF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82", "\xFF",
                          static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(connection->SendReq6(bad, "x"), kBadArgument) << testing::PrintToString(bad);
    EXPECT_EQ(connection->SetSessionId(bad), kBadArgument);
  }
  const std::string longest(kMaxTextSize, 'x');
  EXPECT_EQ(connection->SendReq8((longest + "x").c_str()), kTextTooLong);
  EXPECT_EQ(connection->SendReq5(0, std::numeric_limits<float>::infinity(), 0, 0), kBadArgument);
  STEP(connection->SendReq8(longest.c_str()));
  STEP(connection->SendReq4(0.1F, -2, 3.25F, 16777216, 1e-45F, 3.4028235e38F, 0, 1e20F));
  STEP(connection->SendReq6("a\"b", "\n\xC3\xBC \xE2\x82\xAC \xF0\x9F\x98\x80 \xF4\x8F\xBF\xBF"));
}

TEST_F(ConnectionTest, CommandsAreTakenFromInsideTheConnectedNoticeOnUntilTheLoss) {
  inside = [this](const std::string&) { Indent("to a command " + std::to_string(connection->SendDummyReq())); };
  STEP(Open());
  STEP(Receive(kGrant));
  Say("\nWhat the lost connection has not sent is not sent on the next.");
  EXPECT_EQ(connection->SendReq7("stale"), kTaken);
  STEP(Lose());
  inside = nullptr;
  STEP(Expire());
  STEP(OpenAndGrant());
}

TEST_F(ConnectionTest, WhatASlowPeerLeavesUnsentIsBounded) {
  OpenAndGrant();
  const auto written = [this] { return (AfterStep(), reactor->transport->written.size()); };
  const std::size_t before = written();
  for (std::size_t sent = 0; sent < Outbox::kMaxMessages; ++sent) ASSERT_EQ(connection->SendDummyReq(), kTaken) << sent;
  EXPECT_EQ(connection->SendDummyReq(), kQueueFull);
  EXPECT_EQ(written(), before + Outbox::kMaxMessages);
  EXPECT_EQ(connection->SendDummyReq(), kTaken);
  EXPECT_EQ(written(), before + Outbox::kMaxMessages + 1);

  const std::string longest(kMaxTextSize, 'x');
  std::size_t bytes = 0;
  while (bytes <= Outbox::kMaxBytes && connection->SendReq7(longest.c_str()) == kTaken) bytes += longest.size();
  EXPECT_LE(bytes, Outbox::kMaxBytes);
  EXPECT_GT(bytes, Outbox::kMaxBytes - 16 * longest.size());
  text.clear();  // thousands of lines that say nothing more
}

TEST_F(ConnectionTest, AFailedAttemptIsRepeatedAfterAPauseThatGrowsUntilTheNextSuccess) {
  milliseconds limit = Backoff::kFirstLimit, longest{};
  for (int attempt = 1; attempt <= 40; ++attempt) {
    text.clear();  // the last attempt stands for all
    Lose();
    ASSERT_TRUE(reactor->delay);
    EXPECT_LE(*reactor->delay, limit);
    longest = std::max(longest, *reactor->delay);
    limit = std::min(limit * 2, Backoff::kLastLimit);
    Expire();
  }
  EXPECT_GT(longest, milliseconds(1000));

  OpenAndGrant();
  Lose();
  EXPECT_LE(*reactor->delay, Backoff::kFirstLimit);
  STEP(Expire());
  STEP(Open());
}

TEST_F(ConnectionTest, AnOverdueAnswerAndAMessageOutOfPlaceOrMalformedCostTheConnection) {
  const std::function<void()> faults[] = {
      [this] { STEP(Expire()); },
      [this] { Open(), STEP(Expire()); },
      [this] { OpenAndGrant(), STEP(Expire()); },
      [this] { Open(), STEP(Receive(kPlayAnswer)); },
      [this] { Open(), STEP(Receive(R"({"type":"notice","slot":5,"args":[]})")); },
      [this] { Open(), STEP(Receive(R"({"type":"error","code":1})")); },
      [this] { OpenAndGrant(), STEP(Receive(kGrant)); },
      [this] { OpenAndGrant(), STEP(Receive("{")); },
      [this] { OpenAndGrant(), STEP(Frame(0)); },
      [this] { OpenAndGrant(), Receive(kPlayAnswer), STEP(Net().OnBinary({})); },
  };
  for (const auto& fault : faults) {
    fault();
    Expire();
  }
}

TEST_F(ConnectionTest, ARenewedSessionAndGrantedParametersAreThoseOfTheNextConnection) {
  STEP(connection->SetSessionId("s-0"));
  STEP(Open());
  Say("\nToo late for this authentication, so it follows behind play.");
  STEP(connection->SetSessionId("s-2"));
  STEP(Receive(kGrant));
  STEP(connection->SetSessionId("s-3"));
  STEP(Receive(R"({"type":"notice","slot":11,"args":[0,0,60,4096,1080,1920]})"));
  STEP(Receive(R"({"type":"notice","slot":11,"args":[-1,0,1,1,1,1]})"));
  STEP(Lose());
  STEP(Expire());
  STEP(OpenAndGrant());
}

TEST_F(ConnectionTest, AConnectionWhoseSinkIsGoneEnds) {
  OpenAndGrant();
  sink.reset();
  STEP(Receive(kPlayAnswer));
}

TEST_F(ConnectionTest, AThrowingNoticeDoesNotStopTheConnection) {
  inside = [](const std::string&) { throw std::runtime_error("from the sink"); };
  STEP(OpenAndGrant());
}

}  // namespace
}  // namespace reference::ws
