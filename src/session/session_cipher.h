// The cipher of the session cache: AES-256 over the plain bytes, then Base64.
//
// Threads: from any thread. Key and initialisation vector are built for each call and wiped after it.
#ifndef SESSION_SESSION_CIPHER_H
#define SESSION_SESSION_CIPHER_H

#include <cstdint>
#include <string>
#include <vector>

namespace qv_data_interface {

// The Base64 text of the enciphered bytes. Empty, with a log line, on failure. The same bytes give the same text.
std::string EncryptSessionText(const char* plain, std::int32_t length);

// The plain bytes, which may hold NULs. Empty, with a log line, on failure.
std::string DecryptSessionText(const char* text, std::int32_t length);

// Makes key 32 and iv 16 bytes long and fills them.
void PrepareCacheKeyMaterial(std::vector<unsigned char>& key, std::vector<unsigned char>& iv);

}  // namespace qv_data_interface

#endif
