#include "tools/qv_cloud/cloud.h"

#include <openssl/rand.h>
#include <openssl/ssl.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl/context.hpp>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <vector>

#include "tools/qv_cloud/admission.h"
#include "tools/qv_cloud/certificates.h"
#include "tools/qv_cloud/http_connection.h"
#include "tools/qv_cloud/listener.h"
#include "tools/qv_cloud/state.h"
#include "tools/qv_cloud/ws_connection.h"

namespace qv_cloud {
namespace {

namespace net = boost::asio;

void CheckFaults(const Faults& faults) {
  if (faults.httpStatus < 200 || faults.httpStatus > 599) {
    throw std::invalid_argument("the HTTP status must be from 200 to 599");
  }
}

CloudOptions Checked(CloudOptions options) {
  if (options.sessionValidity.count() <= 0) throw std::invalid_argument("the session validity must be above 0 ms");
  if (options.delay.count() < 0) throw std::invalid_argument("the delay must not be below 0 ms");
  if (options.framePayload > kMaxFramePayload) {
    throw std::invalid_argument("the frame payload must be at most " + std::to_string(kMaxFramePayload) + " bytes");
  }
  CheckFaults(options.faults);
  return options;
}

// A directory that only this process knows, removed with everything in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::uint64_t random = 0;
    RAND_bytes(reinterpret_cast<unsigned char*>(&random), sizeof(random));
    path = std::filesystem::temp_directory_path() / ("qv_cloud-" + std::to_string(random));
    if (!std::filesystem::create_directory(path)) throw std::runtime_error("cannot make " + path.string());
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::filesystem::path path;
};

void WriteFile(const std::filesystem::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text;
  file.close();
  if (!file) throw std::runtime_error("cannot write the authority's certificate to " + path.string());
}

// OpenSSL takes part in so old a version at its lowest level of security only.
bool SetVersions(SSL_CTX* context, bool isOld) {
  if (!isOld) return SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION) == 1;
  return SSL_CTX_set_min_proto_version(context, TLS1_VERSION) == 1 &&
         SSL_CTX_set_max_proto_version(context, TLS1_1_VERSION) == 1 &&
         SSL_CTX_set_cipher_list(context, "DEFAULT:@SECLEVEL=0") == 1;
}

// The context has copies of its own of certificates and key.
void SetUpTls(net::ssl::context& context, ServedCertificate kind, const Certificate& authority) {
  const ServedChain server = MakeServerChain(kind, authority);
  SSL_CTX* const native = context.native_handle();
  bool succeeded = SetVersions(native, kind == ServedCertificate::oldProtocol) &&
                   SSL_CTX_use_certificate(native, server.leaf.certificate.get()) == 1 &&
                   SSL_CTX_use_PrivateKey(native, server.leaf.key.get()) == 1;
  for (const Certificate& issuer : server.above) {
    succeeded = succeeded && SSL_CTX_add1_chain_cert(native, issuer.certificate.get()) == 1;
  }
  if (!succeeded) throw std::runtime_error("OpenSSL refuses the server's certificate");
}

}  // namespace

struct Cloud::Running {
  explicit Running(CloudOptions given) : state(Checked(std::move(given))) {
    if (!state.options.plain) MakeCertificates();
    net::ssl::context* const httpTls = tls ? &*tls : nullptr;
    http.emplace(io, [this, httpTls](auto socket) {
      Admit(std::move(socket), Service::http, httpTls, state,
            [this, httpTls](auto admitted) { ServeHttp(std::move(admitted), httpTls, state); });
    });
    for (Line& line : state.lines) {
      listeners.push_back(std::make_unique<Listener>(io, [this, code = line.ispCode](auto socket) {
        state.observation.Change([code](CloudStats& stats) { ++stats.lines[code].attempts; });
        net::ssl::context* const secure = lineTls ? &*lineTls : nullptr;
        Admit(std::move(socket), Service::signalling, secure, state, [this, secure, code](auto admitted) {
          std::erase_if(connections, [](const auto& connection) { return connection.expired(); });
          connections.push_back(ServeSignalling(std::move(admitted), secure, state, code));
        });
      }));
      line.port = listeners.back()->Port();
      state.observation.Change([&line](CloudStats& stats) { stats.lines[line.ispCode]; });
    }
    thread = std::thread([this] { Work(); });
  }

  ~Running() {
    io.stop();
    thread.join();
  }

  // A connection that fails by an exception ends alone.
  void Work() {
    while (!io.stopped()) {
      try {
        io.run();
      } catch (const std::exception& error) {
        state.observation.Event(std::string("internal failure: ") + error.what());
      }
    }
  }

  void MakeCertificates() {
    authorityFile = state.options.authorityFile;
    if (authorityFile.empty()) authorityFile = temporary.emplace().path / "authority.pem";
    const Certificate authority = MakeAuthority("qv_cloud authority");
    SetUpTls(tls.emplace(net::ssl::context::tls_server), state.options.certificate, authority);
    SetUpTls(lineTls.emplace(net::ssl::context::tls_server), state.options.lineCertificate, authority);
    WriteFile(authorityFile, authority.Pem());
  }

  // Connections live in handlers, which go with the io_context: what they use stands above it.
  State state;
  std::optional<TemporaryDirectory> temporary;
  std::filesystem::path authorityFile;
  std::optional<net::ssl::context> tls;
  std::optional<net::ssl::context> lineTls;
  std::vector<std::weak_ptr<WsConnection>> connections;  // the thread only
  net::io_context io{1};
  std::optional<Listener> http;
  std::vector<std::unique_ptr<Listener>> listeners;
  std::thread thread;
};

Cloud::Cloud(CloudOptions options) : running(std::make_unique<Running>(std::move(options))) {}

Cloud::~Cloud() = default;

std::string Cloud::BaseUrl() const {
  return (running->tls ? "https://localhost:" : "http://localhost:") + std::to_string(running->http->Port());
}

std::filesystem::path Cloud::AuthorityFile() const {
  return running->authorityFile;
}

std::uint16_t Cloud::LinePort(std::uint32_t line) const {
  for (const Line& candidate : running->state.lines) {
    if (candidate.ispCode == line) return candidate.port;
  }
  throw std::invalid_argument("no line has the code " + std::to_string(line));
}

void Cloud::SetFaults(const Faults& faults) {
  CheckFaults(faults);
  running->state.switches.Set(faults);
  net::post(running->io, [target = running.get()] {
    for (const auto& weak : target->connections) {
      if (const auto connection = weak.lock()) connection->Wake();
    }
  });
}

CloudStats Cloud::Stats() const {
  return running->state.observation.Get();
}

bool Cloud::WaitUntil(const std::function<bool(const CloudStats&)>& condition,
                      std::chrono::milliseconds timeout) const {
  return running->state.observation.WaitUntil(condition, timeout);
}

}  // namespace qv_cloud
