// A whole conversation over a plain WebSocket with a peer that follows a script.
#include <boost/asio/read.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <functional>
#include <future>
#include <optional>
#include <thread>

#include "tests/reference/ws_interface/manager_fixture.h"

namespace reference::ws {
namespace {

namespace beast = boost::beast;

// Plays script with the first client that connects, then closes. REQUIRES: a client connects, and its end of the
// connection goes before this object.
class ScriptedPeer {
 public:
  using Stream = beast::websocket::stream<tcp::socket>;

  explicit ScriptedPeer(std::function<void(ScriptedPeer&)> script)
      : thread([this, script = std::move(script)] {
          try {
            stream.emplace(listener.acceptor.accept());
            stream->accept();
            script(*this);
          } catch (const boost::system::system_error&) {
            // The client has gone.
          }
          stream.reset();
        }) {}
  ~ScriptedPeer() { thread.join(); }
  ScriptedPeer(const ScriptedPeer&) = delete;
  ScriptedPeer& operator=(const ScriptedPeer&) = delete;

  std::string Url() const { return LoopbackUrl(listener.Port()); }
  std::string Read() {
    beast::flat_buffer buffer;
    stream->read(buffer);
    return beast::buffers_to_string(buffer.data());
  }
  void Write(std::string_view message, bool text = true) {
    stream->text(text);
    stream->write(boost::asio::buffer(message));
  }
  // Lets the connection stand, reading nothing and so answering no ping, until the client drops it.
  void StaySilent() {
    std::string rest;
    boost::asio::read(stream->next_layer(), boost::asio::dynamic_buffer(rest));
  }

 private:
  SilentPeer listener;
  std::optional<Stream> stream;
  std::thread thread;
};

void ShakeHands(ScriptedPeer& peer) {
  peer.Read();
  peer.Write(R"({"type":"authRsp","code":0,"message":"success","formats":"264"})");
  peer.Read();
  peer.Write(R"({"type":"playRsp","values":[0,0,264,720,1280,30,2048,0,0,0]})");
}

struct WsConversationTest : ManagerFixture {};

TEST_F(WsConversationTest, AConversationRunsToTheFirstFrameAndACommandIsAnswered) {
  std::vector<std::string> heard;
  {
    ScriptedPeer peer([&](ScriptedPeer& self) {
      ShakeHands(self);
      self.Write(std::string("\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\2\0\0\1\x08payload", 27), false);
      heard.push_back(self.Read());
      self.Write(R"({"type":"notice","slot":5,"args":[]})");
      heard.push_back(self.Read());
    });
    std::shared_ptr<ws_interface::IWSInterface> connection;
    std::promise<void> created;
    auto ready = created.get_future().share();
    sink->inside = [&](const std::string& line) {
      ready.wait_for(std::chrono::seconds(10));
      if (line == "frame 1 2 7 264") connection->SendReq17(1);
    };
    manager->Initialise(10, 5000);
    connection = Create(peer.Url());
    created.set_value();
    ASSERT_TRUE(sink->WaitFor("notice 5"));
    EXPECT_EQ(connection->SetSessionId("s-2"), kTaken);
    ASSERT_TRUE(sink->WaitFor("state 0")) << "the peer has closed";
    manager->Stop();
  }
  EXPECT_EQ(heard, (std::vector<std::string>{R"({"type":"command","slot":17,"args":[1]})",
                                             R"({"sessionId":"s-2","type":"session"})"}));
  const auto lines = sink->Lines();
  EXPECT_EQ(
      std::vector(lines.begin(), lines.begin() + 9),
      (std::vector<std::string>{"state 1", "step 5", "step 0", "auth 0 0 0 264", "state 2",
                                "play 0 0 264 720 1280 30 2048 0 0 0", "frame 1 2 7 264", "notice 5", "state 0"}));
}

TEST_F(WsConversationTest, APeerSilentForTwoKeepAliveIntervalsIsLost) {
  ScriptedPeer peer([](ScriptedPeer& self) {
    ShakeHands(self);
    self.StaySilent();
  });
  systemParam = {1, 50, 0, 0};
  manager->Initialise(10, 5000);
  Create(peer.Url());
  EXPECT_TRUE(sink->WaitFor("state 2"));
  EXPECT_TRUE(sink->WaitFor("state 0"));
  manager->Stop();
}

}  // namespace
}  // namespace reference::ws
