#include "reference/collect_interface/session_digest.h"

#include <openssl/evp.h>

#include <array>
#include <span>
#include <stdexcept>

#include "reference/collect_interface/hex_text.h"
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
  return HexText(std::span(digest).first<kDigestBytesKept>());
}

}  // namespace collect_interface
