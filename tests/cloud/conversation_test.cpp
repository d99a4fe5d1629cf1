// The cloud's decisions, without sockets and with a time of the test's own.
#include "tools/qv_cloud/conversation.h"

#include "tests/support/transcribed.h"
#include "tools/qv_cloud/certificates.h"
#include "tools/qv_cloud/json_text.h"
#include "tools/qv_cloud/service.h"

namespace qv_cloud {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;

const std::string kCredentials = R"({"credential1":"u","credential2":"d","credential3":"t")";

struct ConversationTest : tests::Transcribed<> {
  Json::Value Post(const char* path, const std::string& keys) {
    reply = AnswerHttp(state, {"POST", path, "application/json", kCredentials + keys + "}"}, now);
    return ParseObject(reply.body);
  }
  std::string GrantedSession() {
    return Post("/v1/phone-connect", R"(,"targetId":"p")")["data"]["sessionId"].asString();
  }
  std::string Refreshed(const std::string& id) {
    return Post("/v1/refresh-session", R"(,"sessionId":")" + id + "\"")["data"]["sessionId"].asString();
  }

  // The first message that comes back, and what becomes of the connection.
  std::string Send(Conversation& conversation, const std::string& message) {
    const Reply answer = conversation.OnText(message, now);
    return (answer.messages.empty() ? "" : answer.messages[0].bytes) + (answer.end == Reply::End::no ? "" : " end");
  }
  std::string Send(const std::string& message) { return Send(played, message); }
  std::string Authenticate(Conversation& conversation, const std::string& id) {
    return Send(conversation, R"({"type":"auth","sessionId":")" + id + R"("})");
  }
  std::string AuthenticateAnew(const std::string& id) {
    Conversation conversation(state, kLineA);
    return Authenticate(conversation, id);
  }
  std::string Play() {
    Authenticate(played, GrantedSession());
    return Send(R"({"type":"play","videoFormat":265,"width":720,"height":1280,"frameRate":10,"bitRate":9})");
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
    return std::to_string(frames) + " frames" + errors;
  }
  void Set(const Faults& faults) { state.switches.Set(faults); }

  State state{CloudOptions{}};
  Conversation played{state, kDefaultLine};
  Time now{seconds(1000)};
  HttpReply reply;
};

TEST_F(ConversationTest, AKnownSessionAuthenticatesUntilItExpiresAndIsRefreshedForTenMinutesMore) {
  const std::string id = GrantedSession();
  STEP(AuthenticateAnew("s-unknown"));
  STEP(AuthenticateAnew(id));
  now += minutes(59);
  STEP(AuthenticateAnew(id));
  now += minutes(1);
  STEP(AuthenticateAnew(id));
  now += minutes(9);
  STEP(AuthenticateAnew(Refreshed(id)));
  STEP(Refreshed("s-unknown"));
  now += minutes(1);
  STEP(Refreshed(id));
  Set({.expireSessions = true});
  const std::string once = GrantedSession();
  STEP(AuthenticateAnew(once));
  STEP(AuthenticateAnew(once));
  STEP(state.observation.Get().refusedAuthentications);
}

TEST_F(ConversationTest, FramesComeAtTheRateAskedForAndAsChanged) {
  STEP(Play());
  STEP(Pass(seconds(2)));
  STEP(Send(R"({"type":"command","slot":15,"args":[30,7]})"));
  STEP(Pass(seconds(1)));
  STEP(Send(R"({"type":"command","slot":15,"args":[65536,7]})"));
  STEP(Send(R"({"type":"command","slot":15,"args":[0,0]})"));
  STEP(Pass(seconds(10)));
}

TEST_F(ConversationTest, AnErrorIsReportedOnceAndPausesTheFramesUntilAValidSessionComesWhenTheSessionHasExpired) {
  STEP(Play());
  // To set it again arms it again.
  for (int round = 0; round < 2; ++round) {
    STEP(Set({.errorCode = 60102029, .errorAfterMs = 500}));
    STEP(Pass(seconds(1)));
    STEP(Pass(seconds(1)));
  }
  STEP(Set({.errorCode = kSessionExpired, .errorAfterMs = 500, .errorAfterFrames = 45}));
  STEP(Pass(seconds(2)));
  STEP(Send(R"({"type":"session","sessionId":"s-unknown"})"));
  STEP(Pass(seconds(1)));
  Send(R"({"type":"session","sessionId":")" + Refreshed(GrantedSession()) + R"("})");
  STEP(Pass(seconds(1)));
}

TEST_F(ConversationTest, AMalformedMessageEndsTheConnection) {
  ForEachCase([this](const std::string& message) {
    Conversation conversation(state, kLineB);
    Authenticate(conversation, GrantedSession());
    return Send(conversation, message);
  });
  STEP(state.observation.Get().malformed);
  STEP(state.observation.Get().commands.size());
}

TEST_F(ConversationTest, AMalformedRequestIsNotGranted) {
  for (const std::string& target : {std::string("1"), '"' + std::string(4097, 'x') + '"', std::string(100000, '[')}) {
    Post("/v1/phone-connect", R"(,"targetId":)" + target);
    EXPECT_EQ(reply.status, 400U) << target.substr(0, 80);
  }
  Post("/v1/refresh-session", R"(,"targetId":"p")");
  EXPECT_EQ(reply.status, 400U);
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
