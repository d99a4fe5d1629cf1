#include "session/session_cipher.h"

#include "pass_interface/encryption.h"
#include "surface/log.h"

namespace qv_data_interface {
namespace {

using pass_interface::IEncryption;

// Deployment constants: a cache written with other ones cannot be read and counts as a miss.
constexpr char kCacheKeyMaterial[] =
    "ldAtTyr&)tT$7Zcc@tQIVgD|~f`GN3UfRq|Zp>ujFn>c=qVDy"
    ").]O^99jIzUD9hl2Ym=],mNLW3}^plQRX$V=Z{63FX.Gu1S9b";
constexpr char kIvMaterial[] = "G<_}A7V593laxL,0xsYF+>G-1TB=o_=}Owr7vo{W~v)@aKx*s";
static_assert(sizeof(kCacheKeyMaterial) == 98 + 1 && sizeof(kIvMaterial) == 49 + 1);

constexpr std::size_t kKeySize = 32;
constexpr std::size_t kKeyOffset = 21;
constexpr std::size_t kIvSize = 16;
constexpr std::size_t kIvOffset = 19;

void FillMasked(const char* material, std::size_t size, std::vector<unsigned char>& bytes) {
  constexpr unsigned char kMasks[] = {0x5A, 0xA5};
  bytes.resize(size);
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<unsigned char>(static_cast<unsigned char>(material[i]) ^ kMasks[i % 2]);
  }
}

void Wipe(std::vector<unsigned char>& bytes) {
  // volatile, for a plain fill of memory that is about to be freed may be left out by the compiler.
  volatile unsigned char* byte = bytes.data();
  for (std::size_t i = 0; i < bytes.size(); ++i) byte[i] = 0;
}

struct KeyAndIv {
  KeyAndIv() { PrepareCacheKeyMaterial(key, iv); }
  ~KeyAndIv() {
    Wipe(key);
    Wipe(iv);
  }
  KeyAndIv(const KeyAndIv&) = delete;
  KeyAndIv& operator=(const KeyAndIv&) = delete;

  std::vector<unsigned char> key;
  std::vector<unsigned char> iv;
};

const unsigned char* Bytes(const char* text) {
  return reinterpret_cast<const unsigned char*>(text);
}

}  // namespace

void PrepareCacheKeyMaterial(std::vector<unsigned char>& key, std::vector<unsigned char>& iv) {
  FillMasked(kCacheKeyMaterial + kKeyOffset, kKeySize, key);
  FillMasked(kIvMaterial + kIvOffset, kIvSize, iv);
}

std::string EncryptSessionText(const char* plain, std::int32_t length) {
  const KeyAndIv secret;
  std::vector<unsigned char> cipher;
  if (IEncryption::Aes256Encrypt(Bytes(plain), length, secret.key.data(), secret.iv.data(), cipher) == -1) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE]Aes256Encrypt Failed");
    return {};
  }
  return IEncryption::Base64Encode(reinterpret_cast<const char*>(cipher.data()), static_cast<int>(cipher.size()),
                                   false);
}

std::string DecryptSessionText(const char* text, std::int32_t length) {
  const KeyAndIv secret;
  const std::string cipher = IEncryption::Base64Decode(text, length, false);
  std::vector<unsigned char> plain;
  if (IEncryption::Aes256Decrypt(Bytes(cipher.data()), static_cast<int>(cipher.size()), secret.key.data(),
                                 secret.iv.data(), plain) == -1) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE]Aes256Decrypt Failed");
    return {};
  }
  return std::string(plain.begin(), plain.end());
}

}  // namespace qv_data_interface
