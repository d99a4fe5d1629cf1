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

  int Authenticate(Conversation& conversation, const std::string& id) {
    const Reply reply = conversation.OnText(R"({"type":"auth","sessionId":")" + id + R"("})", now);
    const int code = ParseObject(reply.messages.at(0).bytes)["code"].asInt();
    EXPECT_EQ(reply.end, code == 0 ? Reply::End::no : Reply::End::close);
    return code;
  }
  int AuthenticateAnew(const std::string& id) {
    Conversation conversation(state, kLineA);
    return Authenticate(conversation, id);
  }
  // The first message that comes back.
  std::string Say(const std::string& text) {
    const Reply reply = played.OnText(text, now);
    return reply.messages.empty() ? "" : reply.messages[0].bytes;
  }
  void Play() {
    EXPECT_EQ(Authenticate(played, GrantedSession()), 0);
    EXPECT_EQ(Say(kPlay), R"({"type":"playRsp","values":[0,0,265,720,1280,10,9,0,0,0]})");
  }
  // What comes by itself during a while: the number of frames, and each error.
  std::string Pass(Time duration) {
    std::size_t frames = 0, messages = 0;
    std::string errors;
    const Time until = now + duration;
    for (auto wake = played.NextWake(); wake && *wake < until && messages < 1000; wake = played.NextWake()) {
      now = std::max(now, *wake);
      for (const Outgoing& message : played.OnWake(now).messages) {
        ++messages;
        frames += message.binary ? 1 : 0;
        if (!message.binary) errors += " error " + ParseObject(message.bytes)["code"].asString();
      }
    }
    now = until;
    return std::to_string(frames) + errors;
  }

  State state{CloudOptions{}};
  Conversation played{state, kDefaultLine};
  Time now{seconds(1000)};
};

TEST_F(ConversationTest, AKnownSessionAuthenticatesUntilItExpiresAndIsRefreshedForTenMinutesMore) {
  const std::string id = GrantedSession();
  EXPECT_EQ(AuthenticateAnew(id), 0);
  now += minutes(59);
  EXPECT_EQ(AuthenticateAnew(id), 0);
  now += minutes(1);
  EXPECT_EQ(AuthenticateAnew(id), kSessionRefused);
  EXPECT_EQ(AuthenticateAnew("s-unknown"), kSessionRefused);
  EXPECT_EQ(state.observation.Get().refusedAuthentications, 2U);
  now += minutes(9);
  EXPECT_EQ(AuthenticateAnew(Refreshed(id)), 0);
  EXPECT_EQ(Refreshed("s-unknown"), "");
  now += minutes(1);
  EXPECT_EQ(Refreshed(id), "");
  state.switches.Set({.expireSessions = true});
  const std::string once = GrantedSession();
  EXPECT_EQ(AuthenticateAnew(once), 0);
  EXPECT_EQ(AuthenticateAnew(once), kSessionRefused);
}

TEST_F(ConversationTest, FramesComeAtTheRateAskedForAndAsChanged) {
  Play();
  EXPECT_EQ(Pass(seconds(2)), "20");
  EXPECT_EQ(Say(R"({"type":"command","slot":15,"args":[30,7]})"),
            R"({"args":[0,7,30,9,720,1280],"slot":11,"type":"notice"})");
  EXPECT_EQ(Pass(seconds(1)), "31");
  EXPECT_EQ(Say(R"({"type":"command","slot":15,"args":[65536,7]})"),
            R"({"args":[-1,7,30,9,720,1280],"slot":11,"type":"notice"})");
  Say(R"({"type":"command","slot":15,"args":[0,0]})");
  EXPECT_EQ(Pass(seconds(10)), "0");
}

TEST_F(ConversationTest, AnErrorIsReportedOnceAndPausesTheFramesUntilAValidSessionComesWhenTheSessionHasExpired) {
  Play();
  Faults faults;
  faults.errorCode = 60102029;
  faults.errorAfterMs = 500;
  // To set it again arms it again.
  for (int round = 0; round < 2; ++round) {
    state.switches.Set(faults);
    EXPECT_EQ(Pass(seconds(1)), "10 error 60102029");
    EXPECT_EQ(Pass(seconds(1)), "10");
  }
  faults.errorCode = kSessionExpired;
  faults.errorAfterFrames = 45;
  state.switches.Set(faults);
  EXPECT_EQ(Pass(seconds(2)), "5 error 60103013");
  EXPECT_EQ(ParseObject(Say(R"({"type":"session","sessionId":"s-unknown"})"))["code"].asInt(), kSessionRefused);
  EXPECT_EQ(Pass(seconds(1)), "0");
  Say(R"({"type":"session","sessionId":")" + Refreshed(GrantedSession()) + R"("})");
  EXPECT_EQ(Pass(seconds(1)), "10");
}

TEST_F(ConversationTest, AMalformedMessageEndsTheConnection) {
  const char* const kMessages[] = {
      "",
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
  for (const std::string& target : {std::string("1"), '"' + std::string(4097, 'x') + '"', std::string(100000, '[')}) {
    Post("/v1/phone-connect", R"({"credential1":"u","credential2":"d","credential3":"t","targetId":)" + target + "}",
         400);
  }
  Post("/v1/refresh-session", kConnect, 400);
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
