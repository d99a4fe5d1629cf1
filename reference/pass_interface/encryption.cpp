// The cipher of IEncryption: encrypt, then authenticate.
//
//   cipher text = AES-256-CBC(encryptionKey, iv, PKCS#7-padded input)
//   output      = cipher text, then HMAC-SHA256(macKey, iv, cipher text)
//
// Both keys come from the given key through HKDF-SHA256 with a label each, so no key serves two purposes. Decryption
// checks the MAC before anything else: a changed byte or another IV is refused, and the padding says nothing to
// someone who tampers. Nothing random goes in: equal inputs give equal outputs, which those who look rows up by a
// cipher text rely on; whoever sees two outputs can tell whether the inputs begin alike.
#include "pass_interface/encryption.h"

#include <openssl/core_names.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/params.h>

#include <array>
#include <memory>
#include <string_view>
#include <utility>

#include "reference/common/openssl_at_exit.h"

namespace pass_interface {
namespace {

constexpr std::size_t kKeyBytes = 32;
constexpr std::size_t kIvBytes = 16;
constexpr std::size_t kBlockBytes = 16;
constexpr std::size_t kMacBytes = 32;

constexpr std::string_view kEncryptionLabel = "qv reference cipher: encryption";
constexpr std::string_view kMacLabel = "qv reference cipher: authentication";

using Bytes = std::vector<unsigned char>;
using Mac = std::array<unsigned char, kMacBytes>;

template <class Object, void (*Free)(Object*)>
struct Deleter {
  void operator()(Object* object) const { Free(object); }
};
template <class Object, void (*Free)(Object*)>
using Handle = std::unique_ptr<Object, Deleter<Object, Free>>;

class DerivedKey {
 public:
  DerivedKey(const unsigned char* key, std::string_view label) {
    reference::KeepOpenSslAtExit();
    const Handle<EVP_KDF, EVP_KDF_free> kdf(EVP_KDF_fetch(nullptr, OSSL_KDF_NAME_HKDF, nullptr));
    if (!kdf) return;
    const Handle<EVP_KDF_CTX, EVP_KDF_CTX_free> context(EVP_KDF_CTX_new(kdf.get()));
    if (!context) return;
    // OpenSSL reads its parameters only, though it takes them by pointers to non-const.
    char digest[] = "SHA256";
    const OSSL_PARAM parameters[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest, 0),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_KEY, const_cast<unsigned char*>(key), kKeyBytes),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_INFO, const_cast<char*>(label.data()), label.size()),
        OSSL_PARAM_construct_end()};
    derived = EVP_KDF_derive(context.get(), bytes.data(), bytes.size(), parameters) == 1;
  }
  ~DerivedKey() { OPENSSL_cleanse(bytes.data(), bytes.size()); }
  DerivedKey(const DerivedKey&) = delete;
  DerivedKey& operator=(const DerivedKey&) = delete;

  bool IsDerived() const { return derived; }
  const unsigned char* Data() const { return bytes.data(); }

 private:
  std::array<unsigned char, kKeyBytes> bytes{};
  bool derived = false;
};

bool ComputeMac(const unsigned char* key, const unsigned char* iv, const unsigned char* cipherText, std::size_t length,
                Mac& mac) {
  const DerivedKey macKey(key, kMacLabel);
  if (!macKey.IsDerived()) return false;
  const Handle<EVP_MAC, EVP_MAC_free> algorithm(EVP_MAC_fetch(nullptr, OSSL_MAC_NAME_HMAC, nullptr));
  if (!algorithm) return false;
  const Handle<EVP_MAC_CTX, EVP_MAC_CTX_free> context(EVP_MAC_CTX_new(algorithm.get()));
  if (!context) return false;
  char digest[] = "SHA256";
  const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, digest, 0),
                                   OSSL_PARAM_construct_end()};
  std::size_t written = 0;
  return EVP_MAC_init(context.get(), macKey.Data(), kKeyBytes, parameters) == 1 &&
         EVP_MAC_update(context.get(), iv, kIvBytes) == 1 && EVP_MAC_update(context.get(), cipherText, length) == 1 &&
         EVP_MAC_final(context.get(), mac.data(), &written, mac.size()) == 1 && written == mac.size();
}

enum class Direction { kDecrypt = 0, kEncrypt = 1 };

bool RunCipher(Direction direction, const unsigned char* input, int length, const unsigned char* key,
               const unsigned char* iv, Bytes& output) {
  const DerivedKey encryptionKey(key, kEncryptionLabel);
  if (!encryptionKey.IsDerived()) return false;
  const Handle<EVP_CIPHER_CTX, EVP_CIPHER_CTX_free> context(EVP_CIPHER_CTX_new());
  if (!context) return false;
  output.resize(static_cast<std::size_t>(length) + kBlockBytes);
  int written = 0;
  int last = 0;
  if (EVP_CipherInit_ex(context.get(), EVP_aes_256_cbc(), nullptr, encryptionKey.Data(), iv,
                        static_cast<int>(direction)) != 1 ||
      EVP_CipherUpdate(context.get(), output.data(), &written, input, length) != 1 ||
      EVP_CipherFinal_ex(context.get(), output.data() + written, &last) != 1) {
    return false;
  }
  output.resize(static_cast<std::size_t>(written) + static_cast<std::size_t>(last));
  return true;
}

}  // namespace

int IEncryption::Aes256Encrypt(const unsigned char* input, int length, const unsigned char* key,
                               const unsigned char* iv, std::vector<unsigned char>& output) {
  if (input == nullptr || key == nullptr || iv == nullptr || length < 0) return -1;
  Bytes sealed;
  Mac mac;
  if (!RunCipher(Direction::kEncrypt, input, length, key, iv, sealed) ||
      !ComputeMac(key, iv, sealed.data(), sealed.size(), mac)) {
    return -1;
  }
  sealed.insert(sealed.end(), mac.begin(), mac.end());
  output = std::move(sealed);
  return 0;
}

int IEncryption::Aes256Decrypt(const unsigned char* input, int length, const unsigned char* key,
                               const unsigned char* iv, std::vector<unsigned char>& output) {
  if (input == nullptr || key == nullptr || iv == nullptr) return -1;
  if (length < static_cast<int>(kBlockBytes + kMacBytes)) return -1;
  const int cipherLength = length - static_cast<int>(kMacBytes);
  Mac mac;
  if (!ComputeMac(key, iv, input, static_cast<std::size_t>(cipherLength), mac) ||
      CRYPTO_memcmp(mac.data(), input + cipherLength, mac.size()) != 0) {
    return -1;
  }
  Bytes opened;
  if (!RunCipher(Direction::kDecrypt, input, cipherLength, key, iv, opened)) return -1;
  output = std::move(opened);
  return 0;
}

}  // namespace pass_interface
