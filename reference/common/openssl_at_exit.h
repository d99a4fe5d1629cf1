// Keeps OpenSSL usable until the process is gone.
//
// Threads: any. Ownership: none.
#ifndef REFERENCE_COMMON_OPENSSL_AT_EXIT_H
#define REFERENCE_COMMON_OPENSSL_AT_EXIT_H

#include <openssl/crypto.h>

namespace reference {

// To be called before each first use: OpenSSL would otherwise free its tables when the process exits, while a thread of
// a service that ends by itself, or that nobody stopped, may still be at work with them. What stays allocated is the
// system's to take back. Only the first call of the process has work to do.
inline void KeepOpenSslAtExit() {
  OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
}

}  // namespace reference

#endif
