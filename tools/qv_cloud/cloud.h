// A cloud on the loopback interface: it grants phone connects over HTTPS, answers the signalling of three WebSocket
// lines and sends frames. What can go wrong can be switched on. docs/reference-protocol.md says what it speaks.
//
// Threads: every operation may be called from any thread; the cloud runs one thread of its own, which the destructor
// joins. Ownership: nothing outlives the Cloud; an authority file whose path was not given is removed with it.
#ifndef QV_CLOUD_CLOUD_H
#define QV_CLOUD_CLOUD_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qv_cloud {

inline constexpr std::uint32_t kDefaultLine = 65536;
inline constexpr std::uint32_t kLineA = 1;
inline constexpr std::uint32_t kLineB = 2;

// "session unknown or expired": the answer to an authentication or a renewal with a session that is not valid.
inline constexpr std::int32_t kSessionRefused = 60101001;
// The error after which the frames pause until the client goes on with a renewed session.
inline constexpr std::uint32_t kSessionExpired = 60103013;

// The server sends the intermediate authority's certificate with its own, except with missingIntermediate. oldProtocol:
// a valid certificate, but nothing newer than TLS 1.1.
enum class ServedCertificate {
  valid,
  expired,
  notYetValid,
  wrongHost,
  selfSigned,
  unknownAuthority,
  missingIntermediate,
  oldProtocol
};

// half: the answer is cut in its middle, and nothing follows.
enum class HttpAnswer { normal, garbage, never, closed, half };

// The steps of a connection in their order; each is reached when it has succeeded. hello, of TLS only: half of the
// answer to the client's first message has gone out.
enum class Step { none, accept, hello, tls, upgrade, auth, play, firstFrame };

// What can go wrong. The defaults: nothing. Codes of 0 and counts of 0 switch a fault off.
struct Faults {
  std::int32_t refuseConnect = 0;  // the code that answers phone-connect
  std::int32_t refuseRefresh = 0;  // the code that answers refresh-session
  std::uint32_t httpStatus = 200;  // any other status goes out without a decision
  HttpAnswer httpAnswer = HttpAnswer::normal;
  std::uint32_t httpLateMs = 0;
  std::uint32_t httpRetryAfter = 0;  // seconds, told with another status than 200
  std::uint32_t refuseSpans = 0;     // said of every request with traces

  // An HTTP connection is dropped, says nothing more or sends garbage when it has reached the step: accept, hello, tls.
  Step httpCloseAt = Step::none;
  Step httpSilentAt = Step::none;
  Step httpGarbageAt = Step::none;
  // A signalling connection, likewise. Silent at auth or play: that message is not answered; elsewhere: nothing is said
  // any more, not even to a ping. Garbage at auth: malformed JSON instead of the answer; play: after the answer.
  Step closeAt = Step::none;
  Step silentAt = Step::none;
  Step garbageAt = Step::none;
  std::uint32_t silentMs = 0;  // when not 0: the silence at accept, tls, auth or play ends after so long
  bool stopReading = false;    // nothing is read any more after play

  std::uint32_t errorCode = 0;         // reported once, to the first connection that meets the condition:
  std::uint32_t errorAfterMs = 0;      // so long after its play,
  std::uint64_t errorAfterFrames = 0;  // or, when not 0, after so many of its frames
  std::uint64_t dropAfterFrames = 0;   // one connection, once, is dropped after so many frames

  bool expireSessions = false;  // a session authenticates only once
};

struct CloudOptions {
  bool plain = false;                   // http and ws, without TLS
  std::filesystem::path authorityFile;  // where the authority's PEM goes; empty: a new temporary directory
  ServedCertificate certificate = ServedCertificate::valid;
  ServedCertificate lineCertificate = ServedCertificate::valid;
  std::chrono::milliseconds sessionValidity = std::chrono::hours(1);
  std::string sessionPrefix = "s-";    // what the id of each session begins with
  std::chrono::milliseconds delay{0};  // added to each HTTP answer and each message to the client, without reordering
  std::size_t framePayload = 1024;     // bytes, at most kMaxFramePayload
  std::string lineHost = "localhost";  // where clients are told that the lines are
  std::uint16_t linePort = 0;          // told instead of the true ports when not 0
  Faults faults;
  // Told of each event in a line of text without secrets, on the cloud's thread and with no lock held. May be empty.
  // REQUIRES: it does not throw, and does not destroy the Cloud.
  std::function<void(const std::string& line)> onEvent;
};
inline constexpr std::size_t kMaxFramePayload = 512 * 1024;

struct LineStats {
  std::uint64_t attempts = 0;  // TCP connections accepted
  std::uint64_t ever = 0;      // of these, upgraded to WebSocket
  std::uint64_t now = 0;       // of these, not ended yet
};

struct ReceivedCommand {
  std::uint32_t line = 0;
  std::uint32_t slot = 0;
  std::string args;  // compact JSON text of the array
};

// The counts are of messages received, whatever the answer, where nothing else is said.
struct CloudStats {
  std::uint64_t phoneConnects = 0;
  std::uint64_t refreshes = 0;
  std::uint64_t authentications = 0;
  std::uint64_t refusedAuthentications = 0;
  std::uint64_t plays = 0;
  std::uint64_t renewals = 0;        // session messages whose session was accepted
  std::uint64_t framesSent = 0;      // handed to a connection
  std::uint64_t errorsReported = 0;  // error messages sent
  std::uint64_t faultsMet = 0;       // by connections that reached a step at which one is switched on
  std::uint64_t traceRequests = 0;
  std::uint64_t malformed = 0;  // HTTP requests and messages that were refused as malformed
  std::map<std::uint32_t, LineStats> lines;
  std::vector<ReceivedCommand> commands;  // the first kMaxCommandsKept
  std::vector<std::string> traces;        // the first kMaxTracesKept OTLP requests that were taken, compact JSON texts
};
inline constexpr std::size_t kMaxCommandsKept = 10000;
inline constexpr std::size_t kMaxTracesKept = 1000;

class Cloud {
 public:
  // Listens when it returns. Throws std::runtime_error when a port or the authority file cannot be opened, and
  // std::invalid_argument for an option out of range.
  explicit Cloud(CloudOptions options = {});
  ~Cloud();
  Cloud(const Cloud&) = delete;
  Cloud& operator=(const Cloud&) = delete;

  // "https://localhost:PORT", or "http://..." when plain.
  std::string BaseUrl() const;
  // Empty when plain.
  std::filesystem::path AuthorityFile() const;
  // REQUIRES: one of the three lines.
  std::uint16_t LinePort(std::uint32_t line) const;

  // In force for everything that happens after it has returned, connections that stand included. What happens once is
  // armed again. Throws std::invalid_argument for a status that HTTP does not have.
  void SetFaults(const Faults& faults);

  CloudStats Stats() const;
  // Waits until condition holds; false when it still does not after the time-out. The condition is called on this
  // thread under the lock of the statistics. REQUIRES: the condition calls nothing of this Cloud.
  bool WaitUntil(const std::function<bool(const CloudStats&)>& condition, std::chrono::milliseconds timeout) const;

 private:
  struct Running;
  std::unique_ptr<Running> running;
};

}  // namespace qv_cloud

#endif
