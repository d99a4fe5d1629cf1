// One WebSocket connection to an instance: the attempts, the hand-shake, the notices and the commands.
//
// Threads: the operations of IWSInterface, Start and Close from any, from inside a notice too, and none of them waits
// for the network; the rest runs on the reactor's thread, where the notices go out. Ownership: the sink is held weakly;
// a connection whose sink is gone ends.
//
// A command is taken from just before state 2 is reported until state 0 is; otherwise it returns kNotConnected.
#ifndef REFERENCE_WS_INTERFACE_CONNECTION_H
#define REFERENCE_WS_INTERFACE_CONNECTION_H

#include <chrono>
#include <memory>
#include <mutex>
#include <string>

#include "reference/common/notice_gate.h"
#include "reference/ws_interface/backoff.h"
#include "reference/ws_interface/message_codec.h"
#include "reference/ws_interface/outbox.h"
#include "reference/ws_interface/transport.h"
#include "ws_interface/ws_interface.h"
#include "ws_interface/ws_interface_notic.h"

namespace reference::ws {

struct ConnectionSettings {
  Endpoint endpoint;
  AuthRequest auth;
  ws_interface::WSVideoParam video{};
  // For the way to an open WebSocket, again for the authentication answer and again for the play answer.
  std::chrono::milliseconds timeout{};
  // Interval of the keep-alive pings; 0: none.
  std::chrono::milliseconds keepAlive{};
};

class Connection final : public ws_interface::IWSInterface,
                         public TransportSink,
                         public WakerUser,
                         public std::enable_shared_from_this<Connection> {
 public:
  Connection(ConnectionSettings settings, std::weak_ptr<ws_interface::IWSInterfaceNotic> sink,
             std::shared_ptr<Reactor> reactor);

  // Begins the first attempt. To be called once.
  void Start();
  // Ends the connection for good: afterwards no notice comes, and none is in flight unless the calling thread is itself
  // delivering one. Needs no memory. May be called again.
  void Close();

  bool RunsOn(const Reactor* other) const { return reactor.get() == other; }

  std::int32_t SetSessionId(const char* sessionId) override;
  std::int32_t SendReq2(std::uint64_t value1, std::uint64_t value2) override;
  std::int32_t SendReq3(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3, std::int32_t count) override;
  std::int32_t SendReq4(float value1, float value2, float value3, float value4, float value5, float value6,
                        float value7, float value8) override;
  std::int32_t SendReq5(std::int32_t value1, float value2, float value3, float value4) override;
  std::int32_t SendReq6(const char* text1, const char* text2) override;
  std::int32_t SendReq7(const char* text) override;
  std::int32_t SendReq8(const char* text) override;
  std::int32_t SendReq9(const char* text, std::int32_t value) override;
  std::int32_t SendReq10(std::uint64_t value1, std::uint64_t value2) override;
  std::int32_t SendReq11(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                         std::int32_t value4) override;
  std::int32_t SendMicParamReq(std::int32_t value1, std::int32_t value2, std::int32_t value3) override;
  std::int32_t SendReq13(std::uint64_t value1, std::uint64_t value2) override;
  std::int32_t SendCameraParamReq(std::int32_t videoFormat, std::int32_t value2, std::int32_t value3,
                                  std::uint64_t value4, std::int32_t value5) override;
  std::int32_t SendReq15(std::uint64_t value1, std::uint64_t value2) override;
  std::int32_t SendReq16(std::uint64_t value1, std::uint64_t value2) override;
  std::int32_t SendReq17(std::int32_t value) override;
  std::int32_t SendDummyReq() override;

 private:
  enum class Phase { kNew, kPausing, kConnecting, kAuthenticating, kAwaitingPlay, kStreaming, kEnded };

  void OnWoken() override;
  void OnTime() override;
  void OnFault() noexcept override;

  void OnResolved() override;
  void OnOpen() override;
  void OnText(std::string_view text) override;
  void OnBinary(std::span<const std::uint8_t> bytes) override;
  void OnWritten() override;
  void OnLost(const std::string& reason) override;

  void Handle(const AuthAnswer& answer);
  void Handle(const PlayAnswer& answer);
  void Handle(const Notice& notice);
  void Handle(const CloudError& error);
  void Handle(const Malformed& malformed);

  void BeginAttempt();
  void Authenticate();
  void Refused(const AuthAnswer& answer);
  void Lost(const char* reason);
  void DropTransport();
  void Shutdown();

  // False when the connection has ended, be it inside the notice: then nothing more is to be done.
  template <class Call>
  bool Report(Call&& call);
  bool ReportState(std::uint32_t state);

  void Overdue(const std::string& what);
  void WriteOwn(std::string text);
  void WriteNext();

  template <class... Arguments>
  std::int32_t Command(int slot, Arguments... arguments);
  std::int32_t Queue(std::string text);

  // Constant after construction, the waker after Start.
  const ConnectionSettings settings;
  const std::string name;
  const std::shared_ptr<Reactor> reactor;
  std::unique_ptr<Waker> waker;

  // Synchronise themselves.
  NoticeGate<ws_interface::IWSInterfaceNotic> gate;
  Outbox outbox;

  // Held while a session message is queued, so that the last id given is also the last one sent.
  std::mutex sessionMutex;
  std::string sessionId;

  // This object, from Close until the I/O thread has let the transport go.
  std::mutex closingMutex;
  std::shared_ptr<Connection> closing;

  // Used on the I/O thread only.
  Phase phase = Phase::kNew;
  std::shared_ptr<Transport> transport;
  Backoff backoff;
  ws_interface::WSVideoParam video;
  std::string authenticatedSessionId;
  bool writing = false;
  bool firstFrameSeen = false;
};

}  // namespace reference::ws

#endif
