#include "reference/ws_interface/tls.h"

#include <openssl/x509v3.h>

#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/address.hpp>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "reference/common/openssl_at_exit.h"
#include "reference/common/path_text.h"
#include "reference/common/settings.h"
#include "reference/ws_interface/system_authorities.h"

namespace reference::ws {
namespace {

namespace asio = boost::asio;

// Read here rather than by OpenSSL, which opens narrow paths only.
void TrustAuthorityFile(asio::ssl::context& context, const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const std::string pem((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  if (!stream) throw std::runtime_error("the authority file " + Utf8Text(file) + " cannot be read");
  boost::system::error_code error;
  context.add_certificate_authority(asio::buffer(pem), error);
  if (error) {
    throw std::runtime_error("the authority file " + Utf8Text(file) + " holds no PEM certificates: " + error.message());
  }
}

std::shared_ptr<asio::ssl::context> NewContext() {
  KeepOpenSslAtExit();
  auto context = std::make_shared<asio::ssl::context>(asio::ssl::context::tls_client);
  if (SSL_CTX_set_min_proto_version(context->native_handle(), TLS1_2_VERSION) != 1) {
    throw std::runtime_error("OpenSSL refuses TLS 1.2 as the lowest version");
  }
  context->set_verify_mode(asio::ssl::verify_peer);
  return context;
}

// Reading them takes a tenth of a second, too long for each attempt on a thread that other connections share.
std::shared_ptr<asio::ssl::context> SystemContext() {
  struct Cache {
    std::mutex mutex;
    std::shared_ptr<asio::ssl::context> context;
  };
  // Never destroyed: an I/O thread that ends by itself may still use it when the process ends.
  static Cache& cache = *new Cache;
  const std::lock_guard<std::mutex> lock(cache.mutex);
  if (!cache.context) {
    auto context = NewContext();
    if (!TrustSystemAuthorities(context->native_handle())) {
      throw std::runtime_error("the system's certificate authorities cannot be read");
    }
    cache.context = std::move(context);
  }
  return cache.context;
}

bool IsAddress(const std::string& host) {
  boost::system::error_code error;
  asio::ip::make_address(host, error);
  return !error;
}

}  // namespace

std::shared_ptr<asio::ssl::context> TlsContext() {
  const std::filesystem::path authorityFile = AuthorityFile();
  if (authorityFile.empty()) return SystemContext();
  auto context = NewContext();
  TrustAuthorityFile(*context, authorityFile);
  return context;
}

bool ExpectHost(SSL* tls, const std::string& host) {
  X509_VERIFY_PARAM* const expected = SSL_get0_param(tls);
  if (IsAddress(host)) return X509_VERIFY_PARAM_set1_ip_asc(expected, host.c_str()) == 1;
  X509_VERIFY_PARAM_set_hostflags(expected, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
  return X509_VERIFY_PARAM_set1_host(expected, host.c_str(), host.size()) == 1 &&
         SSL_set_tlsext_host_name(tls, host.c_str()) == 1;
}

}  // namespace reference::ws
