// Base64 of IEncryption: the standard alphabet with padding, in a single line. The flag is there for the SDK's own
// library; both values mean this one form here.
#include <openssl/evp.h>

#include <limits>
#include <string_view>

#include "pass_interface/encryption.h"

namespace pass_interface {
namespace {

// OpenSSL counts the four thirds of it in an int.
constexpr int kMaximumBytes = std::numeric_limits<int>::max() / 2;

std::string Encode(const char* bytes, int length) {
  std::string text(4 * ((static_cast<std::size_t>(length) + 2) / 3) + 1, '\0');
  const int written = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                      reinterpret_cast<const unsigned char*>(bytes), length);
  text.resize(static_cast<std::size_t>(written));
  return text;
}

}  // namespace

std::string IEncryption::Base64Encode(const char* bytes, int length, bool /*flag*/) {
  if (bytes == nullptr || length <= 0 || length > kMaximumBytes) return {};
  return Encode(bytes, length);
}

std::string IEncryption::Base64Decode(const char* text, int length, bool /*flag*/) {
  if (text == nullptr || length <= 0 || length % 4 != 0) return {};
  const std::string_view source(text, static_cast<std::size_t>(length));
  std::string bytes(source.size() / 4 * 3, '\0');
  const int written = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                                      reinterpret_cast<const unsigned char*>(text), length);
  if (written < 0) return {};
  // OpenSSL decodes the padding as zero bits and counts them in.
  const std::size_t padding = source.ends_with("==") ? 2 : source.ends_with('=') ? 1 : 0;
  if (static_cast<std::size_t>(written) < padding) return {};
  bytes.resize(static_cast<std::size_t>(written) - padding);
  // It also takes blanks at the ends, padding anywhere and stray bits in the last character. None of these comes back
  // from an encoder, so comparing with the way back refuses them all.
  if (Encode(bytes.data(), static_cast<int>(bytes.size())) != source) return {};
  return bytes;
}

}  // namespace pass_interface
