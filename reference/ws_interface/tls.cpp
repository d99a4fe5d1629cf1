#include "reference/ws_interface/tls.h"

#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/address.hpp>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
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
std::string ReadAuthorityFile(const std::filesystem::path& file) {
  const auto refuse = [&file](const char* reason) {
    throw std::runtime_error("the authority file " + Utf8Text(file) + reason);
  };
  std::error_code ignored;
  // The end of a pipe would be waited for.
  if (!std::filesystem::is_regular_file(file, ignored)) refuse(" is missing or no regular file");
  std::ifstream stream(file, std::ios::binary);
  std::string pem((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  if (!stream) refuse(" cannot be read");
  // asio takes nothing for an authority.
  if (pem.empty()) refuse(" is empty");
  return pem;
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

bool IsAddress(const std::string& host) {
  boost::system::error_code error;
  asio::ip::make_address(host, error);
  return !error;
}

}  // namespace

std::shared_ptr<asio::ssl::context> TlsTrust::Context() {
  const std::filesystem::path file = AuthorityFile();
  std::string wanted = file.empty() ? std::string() : ReadAuthorityFile(file);
  const std::lock_guard<std::mutex> lock(mutex);
  if (context && authorities == wanted) return context;

  auto made = NewContext();
  if (file.empty()) {
    if (!TrustSystemAuthorities(made->native_handle())) {
      throw std::runtime_error("the system's certificate authorities cannot be read");
    }
  } else {
    boost::system::error_code error;
    made->add_certificate_authority(asio::buffer(wanted), error);
    if (error) {
      throw std::runtime_error("the authority file " + Utf8Text(file) +
                               " holds no PEM certificates: " + error.message());
    }
  }
  authorities.swap(wanted);
  context = std::move(made);
  return context;
}

void TlsTrust::Prepare() noexcept {
  // Also when there is no context.
  KeepOpenSslAtExit();
  try {
    Context();
  } catch (const std::exception&) {
    // Told by the connection that needs it.
  }
  // Each thread has two generators of its own, whose first numbers take long.
  unsigned char unused = 0;
  RAND_bytes(&unused, 1);
  RAND_priv_bytes(&unused, 1);
}

bool ExpectHost(SSL* tls, const std::string& host) {
  X509_VERIFY_PARAM* const expected = SSL_get0_param(tls);
  if (IsAddress(host)) return X509_VERIFY_PARAM_set1_ip_asc(expected, host.c_str()) == 1;
  X509_VERIFY_PARAM_set_hostflags(expected, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
  return X509_VERIFY_PARAM_set1_host(expected, host.c_str(), host.size()) == 1 &&
         SSL_set_tlsext_host_name(tls, host.c_str()) == 1;
}

}  // namespace reference::ws
