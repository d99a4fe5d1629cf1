/// @file
/// The service library's cipher helpers. All are safe to call from any thread.
#ifndef SDK_PASS_INTERFACE_ENCRYPTION_H
#define SDK_PASS_INTERFACE_ENCRYPTION_H

#include <string>
#include <vector>

#include "pass_interface/export.h"

namespace pass_interface {

/// AES-256-CBC with padding, and Base64.
class IEncryption {
 public:
  /// key: 32 bytes, iv: 16 bytes. The same input always gives the same output. -1 on failure, else success.
  SDK_PASS_INTERFACE_API static int Aes256Encrypt(const unsigned char* input, int length, const unsigned char* key,
                                                  const unsigned char* iv, std::vector<unsigned char>& output);
  /// The reverse. -1 on failure, a wrong padding among them, else success.
  SDK_PASS_INTERFACE_API static int Aes256Decrypt(const unsigned char* input, int length, const unsigned char* key,
                                                  const unsigned char* iv, std::vector<unsigned char>& output);
  /// flag is always false here: no line breaks. Empty on failure.
  SDK_PASS_INTERFACE_API static std::string Base64Encode(const char* bytes, int length, bool flag);
  /// Empty when the text is not Base64.
  SDK_PASS_INTERFACE_API static std::string Base64Decode(const char* text, int length, bool flag);

  virtual ~IEncryption() = default;
};

}  // namespace pass_interface

#endif
