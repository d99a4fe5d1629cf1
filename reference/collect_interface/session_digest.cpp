#include "reference/collect_interface/session_digest.h"

#include <openssl/evp.h>

#include <array>
#include <stdexcept>

#include "reference/common/openssl_at_exit.h"

namespace collect_interface {
namespace {

constexpr std::size_t kDigestBytesKept = 8;

}  // namespace

std::string SessionDigest(std::string_view sessionId) {
  if (sessionId.empty()) return {};
  reference::KeepOpenSslAtExit();
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  if (EVP_Digest(sessionId.data(), sessionId.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1) {
    throw std::runtime_error("the digest of a session id could not be made");
  }
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < kDigestBytesKept; ++i) {
    text += kDigits[digest[i] >> 4];
    text += kDigits[digest[i] & 15];
  }
  return text;
}

}  // namespace collect_interface
