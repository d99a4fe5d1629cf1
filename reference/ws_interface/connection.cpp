// The way of one connection, on the I/O thread. Every step that reports something ends there when the report ended the
// connection.
#include "reference/ws_interface/connection.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <random>
#include <utility>
#include <variant>

#include "reference/common/guarded.h"
#include "reference/ws_interface/log.h"

namespace reference::ws {
namespace {

constexpr std::uint32_t kDisconnected = 0;
constexpr std::uint32_t kConnecting = 1;
constexpr std::uint32_t kConnected = 2;
constexpr std::int32_t kStepConnected = 0;
constexpr std::int32_t kStepResolved = 5;
constexpr std::int32_t kDefaultFormat = 264;

// The system is asked once a process: on a virtual machine that takes a tenth of a millisecond.
std::uint32_t NewSeed() {
  static std::atomic<std::uint32_t> next{std::random_device()()};
  constexpr std::uint32_t kStep = 0x9E3779B9;
  return next += kStep;
}

}  // namespace

Connection::Connection(ConnectionSettings settings, std::weak_ptr<ws_interface::IWSInterfaceNotic> sink,
                       std::shared_ptr<Reactor> reactor)
    : settings(std::move(settings)),
      name(Url(this->settings.endpoint)),
      reactor(std::move(reactor)),
      gate(std::move(sink)),
      sessionId(this->settings.auth.sessionId),
      backoff(NewSeed()),
      video(this->settings.video) {}

void Connection::Start() {
  waker = reactor->MakeWaker(weak_from_this());
  waker->Wake();
}

void Connection::Close() {
  outbox.End();
  gate.Close();
  const std::lock_guard<std::mutex> lock(closingMutex);
  closing = shared_from_this();
  if (!waker->Wake()) closing.reset();
}

void Connection::Shutdown() {
  phase = Phase::kEnded;
  outbox.End();
  waker->Cancel();
  if (transport) transport->Close();
  transport.reset();
  const std::lock_guard<std::mutex> lock(closingMutex);
  closing.reset();
}

void Connection::OnWoken() {
  if (gate.IsClosed()) return Shutdown();
  if (phase == Phase::kNew) return BeginAttempt();
  WriteNext();
}

template <class Call>
bool Connection::Report(Call&& call) {
  bool sinkLives = true;
  Guarded(kLogTag, "a notice", [&] { sinkLives = gate.Deliver(std::forward<Call>(call)); });
  if (sinkLives && !gate.IsClosed()) return true;
  Shutdown();
  return false;
}

bool Connection::ReportState(std::uint32_t state) {
  return Report([state](auto& sink) { sink.OnConnectState(state); });
}

void Connection::BeginAttempt() {
  phase = Phase::kConnecting;
  firstFrameSeen = false;
  writing = false;
  if (!ReportState(kConnecting)) return;
  try {
    transport = reactor->MakeTransport(settings.endpoint, settings.keepAlive);
    waker->WakeAfter(settings.timeout);
    transport->Open(weak_from_this());
  } catch (const std::exception& exception) {
    Lost(exception.what());
  }
}

void Connection::OnResolved() {
  Report([](auto& sink) { sink.OnConnectStep(kStepResolved); });
}

void Connection::OnOpen() {
  if (!Report([](auto& sink) { sink.OnConnectStep(kStepConnected); })) return;
  phase = Phase::kAuthenticating;
  waker->WakeAfter(settings.timeout);
  Authenticate();
}

void Connection::Authenticate() {
  AuthRequest request = settings.auth;
  {
    const std::lock_guard<std::mutex> lock(sessionMutex);
    request.sessionId = sessionId;
  }
  authenticatedSessionId = request.sessionId;
  WriteOwn(EncodeAuth(request));
}

void Connection::OnText(std::string_view text) {
  std::visit([this](const auto& message) { Handle(message); }, DecodeMessage(text));
}

void Connection::Handle(const Malformed& malformed) {
  Lost(("malformed message: " + malformed.fault).c_str());
}

void Connection::Handle(const AuthAnswer& answer) {
  if (phase != Phase::kAuthenticating) return Lost("authRsp without auth");
  if (answer.code != 0) return Refused(answer);

  LogInformation(name.c_str(), "connected and authenticated");
  backoff.Reset();
  std::int32_t format = kDefaultFormat;
  if (!Report([&](auto& sink) { format = sink.OnAuthRsp(0, 0, 0, answer.formats.c_str()); })) return;
  phase = Phase::kAwaitingPlay;
  waker->WakeAfter(settings.timeout);
  WriteOwn(EncodePlay(format, video));
  outbox.Open();
  {
    // A session renewed while the authentication was under way has not reached the cloud yet.
    const std::lock_guard<std::mutex> lock(sessionMutex);
    if (sessionId != authenticatedSessionId) Queue(EncodeSession(sessionId));
  }
  ReportState(kConnected);
}

void Connection::Refused(const AuthAnswer& answer) {
  const std::string fault = "authentication refused with code " + std::to_string(answer.code) + ", no further attempt";
  LogFailure(name.c_str(), fault.c_str());
  DropTransport();
  phase = Phase::kEnded;
  if (!Report([&](auto& sink) { sink.OnErrorCode(answer.code, answer.message.c_str()); })) return;
  if (ReportState(kDisconnected)) Shutdown();
}

void Connection::Handle(const PlayAnswer& answer) {
  if (phase != Phase::kAwaitingPlay) return Lost("playRsp without play");
  phase = Phase::kStreaming;
  waker->Cancel();
  Report([&](auto& sink) { DeliverPlayAnswer(answer, sink); });
}

void Connection::Handle(const Notice& notice) {
  if (phase < Phase::kAwaitingPlay) return Lost("notice before authRsp");
  if (const auto inForce = VideoParamInForce(notice)) video = *inForce;
  Report([&](auto& sink) { DeliverNotice(notice, sink); });
}

void Connection::Handle(const CloudError& error) {
  if (phase < Phase::kAwaitingPlay) return Lost("error before authRsp");
  Report([&](auto& sink) { sink.OnErrorCode(error.code, error.message.c_str()); });
}

void Connection::OnBinary(std::span<const std::uint8_t> bytes) {
  if (phase != Phase::kStreaming) return Lost("video frame before playRsp");
  const auto frame = DecodeVideoFrame(bytes);
  if (!frame) return Lost("malformed video frame: cut short, or of a format other than 264 and 265");
  // Nothing is rendered here; the first frame only tells that the stream runs.
  if (std::exchange(firstFrameSeen, true)) return;
  Report([&](auto& sink) { sink.OnFirstFrame(frame->sequence, frame->time, frame->payloadSize, frame->format); });
}

void Connection::OnLost(const std::string& reason) {
  Lost(reason.c_str());
}

void Connection::Lost(const char* reason) {
  LogFailure(name.c_str(), reason);
  DropTransport();
  phase = Phase::kPausing;
  if (ReportState(kDisconnected)) waker->WakeAfter(backoff.Next());
}

void Connection::DropTransport() {
  outbox.Close();
  waker->Cancel();
  if (transport) transport->Close();
  transport.reset();
}

void Connection::OnTime() {
  switch (phase) {
    case Phase::kPausing:
      return BeginAttempt();
    case Phase::kConnecting:
      return Overdue(std::string("still ") + transport->Stage() + ", no open WebSocket");
    case Phase::kAuthenticating:
      return Overdue("no authRsp");
    case Phase::kAwaitingPlay:
      return Overdue("no playRsp");
    case Phase::kNew:
    case Phase::kStreaming:
    case Phase::kEnded:
      return;
  }
}

void Connection::OnFault() noexcept {
  if (phase == Phase::kEnded) return;
  if (phase > Phase::kPausing) return Lost("a task failed, the connection begins anew");
  phase = Phase::kPausing;
  waker->WakeAfter(backoff.Next());
}

void Connection::Overdue(const std::string& what) {
  Lost((what + " within " + std::to_string(settings.timeout.count()) + " ms").c_str());
}

void Connection::WriteOwn(std::string text) {
  outbox.PushOwn(std::move(text));
  WriteNext();
}

void Connection::OnWritten() {
  writing = false;
  WriteNext();
}

void Connection::WriteNext() {
  // A wake-up may arrive late: after the connection it was meant for, or while its successor is writing already.
  std::string text;
  if (writing || !transport || !outbox.Next(text)) return;
  writing = true;
  transport->Write(std::move(text));
}

}  // namespace reference::ws
