// The cloud's decisions, without sockets and with a time of the test's own.
#include "tools/qv_cloud/conversation.h"

#include <gtest/gtest.h>

#include "tools/qv_cloud/certificates.h"
#include "tools/qv_cloud/json_text.h"
#include "tools/qv_cloud/service.h"

namespace qv_cloud {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;

constexpr const char* kConnect = R"({"credential1":"u","credential2":"d","credential3":"t","targetId":"p"})";
constexpr const char* kPlay =
    R"({"type":"play","videoFormat":265,"width":720,"height":1280,"frameRate":10,"bitRate":9})";

class ConversationTest : public testing::Test {
 protected:
  Json::Value Post(const char* path, const std::string& body, unsigned expectedStatus = 200) {
    const HttpReply reply = AnswerHttp(state, {"POST", path, "application/json", body}, now);
    EXPECT_EQ(reply.status, expectedStatus) << reply.body;
    return ParseObject(reply.body);
  }
  std::string GrantedSession() { return Post("/v1/phone-connect", kConnect)["data"]["sessionId"].asString(); }
  std::string Refreshed(const std::string& id) {
    return Post("/v1/refresh-session", R"({"credential1":"u","credential2":"d","credential3":"t","sessionId":")" + id +
                                           R"("})")["data"]["sessionId"]
        .asString();
  }

  static std::string Auth(const std::string& id) { return R"({"type":"auth","sessionId":")" + id + R"("})"; }
  int Authenticate(Conversation& conversation, const std::string& id) {
    const Reply reply = conversation.OnText(Auth(id), now);
    const int code = ParseObject(reply.messages.at(0).bytes)["code"].asInt();
    EXPECT_EQ(reply.end, code == 0 ? Reply::End::no : Reply::End::close);
    return code;
  }
  int AuthenticateAnew(const std::string& id) {
    Conversation conversation(state, kLineA);
    return Authenticate(conversation, id);
  }
  void Play(Conversation& conversation) {
    EXPECT_EQ(Authenticate(conversation, GrantedSession()), 0);
    const Reply reply = conversation.OnText(kPlay, now);
    ASSERT_EQ(reply.messages.size(), 1U);
    EXPECT_EQ(reply.messages[0].bytes, R"({"type":"playRsp","values":[0,0,265,720,1280,10,9,0,0,0]})");
  }

  // Everything that the conversation sends by itself during a while.
  struct Sent {
    std::size_t frames = 0;
    std::vector<std::uint64_t> errors;
  };
  Sent Pass(Conversation& conversation, Time duration) {
    Sent sent;
    const Time until = now + duration;
    for (auto wake = conversation.NextWake(); wake && *wake < until; wake = conversation.NextWake()) {
      if (sent.frames + sent.errors.size() > 1000) {
        ADD_FAILURE() << "messages without end";
        break;
      }
      now = std::max(now, *wake);
      const Reply reply = conversation.OnWake(now);
      for (const Outgoing& message : reply.messages) {
        if (message.binary) {
          ++sent.frames;
        } else {
          sent.errors.push_back(ParseObject(message.bytes)["code"].asUInt64());
        }
      }
    }
    now = until;
    return sent;
  }

  State state{CloudOptions{}};
  Time now{seconds(1000)};
};

TEST_F(ConversationTest, ASessionAuthenticatesOnEveryConnectionUntilItExpires) {
  const std::string id = GrantedSession();
  EXPECT_EQ(AuthenticateAnew(id), 0);
  now += minutes(59);
  EXPECT_EQ(AuthenticateAnew(id), 0);
  now += minutes(1);
  EXPECT_EQ(AuthenticateAnew(id), kSessionRefused);
  EXPECT_EQ(AuthenticateAnew("s-unknown"), kSessionRefused);
  EXPECT_EQ(state.observation.Get().refusedAuthentications, 2U);
}

TEST_F(ConversationTest, OnlyAKnownSessionIsRefreshedAndShortlyAfterItsEndToo) {
  const std::string id = GrantedSession();
  now += minutes(61);
  EXPECT_EQ(AuthenticateAnew(Refreshed(id)), 0);
  EXPECT_EQ(Refreshed("s-unknown"), "");
  now += minutes(10);
  EXPECT_EQ(Refreshed(id), "");
}

TEST_F(ConversationTest, FramesComeAtTheRateAskedForAndAsChanged) {
  Conversation conversation(state, kDefaultLine);
  Play(conversation);
  EXPECT_EQ(Pass(conversation, seconds(2)).frames, 20U);
  const Reply changed = conversation.OnText(R"({"type":"command","slot":15,"args":[30,7]})", now);
  EXPECT_EQ(changed.messages.at(0).bytes, R"({"args":[0,7,30,9,720,1280],"slot":11,"type":"notice"})");
  EXPECT_EQ(Pass(conversation, seconds(1)).frames, 31U);
  const Reply refused = conversation.OnText(R"({"type":"command","slot":15,"args":[65536,7]})", now);
  EXPECT_EQ(refused.messages.at(0).bytes, R"({"args":[-1,7,30,9,720,1280],"slot":11,"type":"notice"})");
  conversation.OnText(R"({"type":"command","slot":15,"args":[0,0]})", now);
  EXPECT_EQ(Pass(conversation, seconds(10)).frames, 0U);
}

TEST_F(ConversationTest, AfterSessionExpiredFramesPauseUntilAValidSessionComes) {
  Conversation conversation(state, kDefaultLine);
  Play(conversation);
  Faults faults;
  faults.errorCode = kSessionExpired;
  faults.errorAfterFrames = 5;
  state.switches.Set(faults);
  const Sent sent = Pass(conversation, seconds(2));
  EXPECT_EQ(sent.frames, 5U);
  EXPECT_EQ(sent.errors, std::vector<std::uint64_t>{kSessionExpired});

  const Reply refused = conversation.OnText(R"({"type":"session","sessionId":"s-unknown"})", now);
  EXPECT_EQ(ParseObject(refused.messages.at(0).bytes)["code"].asInt(), kSessionRefused);
  EXPECT_EQ(Pass(conversation, seconds(1)).frames, 0U);
  conversation.OnText(R"({"type":"session","sessionId":")" + Refreshed(GrantedSession()) + R"("})", now);
  EXPECT_EQ(Pass(conversation, seconds(1)).frames, 10U);
}

TEST_F(ConversationTest, AnErrorIsReportedOnceAndASetOfFaultsArmsItAgain) {
  Conversation conversation(state, kDefaultLine);
  Play(conversation);
  Faults faults;
  faults.errorCode = 60102029;
  faults.errorAfterMs = 500;
  for (int round = 0; round < 2; ++round) {
    state.switches.Set(faults);
    const Sent sent = Pass(conversation, seconds(1));
    EXPECT_EQ(sent.errors, std::vector<std::uint64_t>{60102029});
    EXPECT_EQ(sent.frames, 10U);
    EXPECT_TRUE(Pass(conversation, seconds(1)).errors.empty());
  }
}

TEST_F(ConversationTest, AMalformedMessageEndsTheConnection) {
  const char* const kMessages[] = {
      "",
      "{",
      "[]",
      R"({"type":1})",
      R"({"type":"play"})",
      R"({"type":"auth","sessionId":"s"})",
      R"({"type":"session"})",
      R"({"type":"command","slot":1,"args":[]})",
      R"({"type":"command","slot":19,"args":[]})",
      R"({"type":"command","slot":18})",
      R"({"type":"command","slot":7,"args":[1]})",
      R"({"type":"command","slot":17,"args":[2147483648]})",
      R"({"type":"command","slot":2,"args":[-1,0]})",
  };
  for (const char* message : kMessages) {
    Conversation conversation(state, kLineB);
    ASSERT_EQ(Authenticate(conversation, GrantedSession()), 0);
    EXPECT_EQ(conversation.OnText(message, now).end, Reply::End::close) << message;
  }
  EXPECT_EQ(state.observation.Get().malformed, std::size(kMessages));
  EXPECT_TRUE(state.observation.Get().commands.empty());
}

TEST_F(ConversationTest, AMalformedRequestIsNotGranted) {
  const std::string tooLong(4097, 'x');
  Post("/v1/phone-connect", "{}", 400);
  Post("/v1/phone-connect", "[", 400);
  Post("/v1/phone-connect", std::string(100000, '['), 400);
  Post("/v1/refresh-session", kConnect, 400);
  Post("/v1/phone-connect",
       R"({"credential1":"u","credential2":"d","credential3":"t","targetId":")" + tooLong + R"("})", 400);
}

TEST(Authority, AFileThatCannotBeWrittenIsNamedAndNoKeyWouldStandInIt) {
  const std::string pem = MakeAuthority("an authority").Pem();
  EXPECT_TRUE(pem.starts_with("-----BEGIN CERTIFICATE-----"));
  EXPECT_EQ(pem.find("PRIVATE"), std::string::npos);
  CloudOptions options;
  options.authorityFile = std::filesystem::temp_directory_path() / "no such directory" / "authority.pem";
  try {
    const Cloud cloud(options);
    FAIL() << "started";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("no such directory"), std::string::npos) << error.what();
  }
}

}  // namespace
}  // namespace qv_cloud
