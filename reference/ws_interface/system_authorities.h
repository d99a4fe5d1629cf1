// The certificate authorities that the operating system trusts.
//
// Threads: any, each with its own context. Ownership: takes none.
#ifndef REFERENCE_WS_INTERFACE_SYSTEM_AUTHORITIES_H
#define REFERENCE_WS_INTERFACE_SYSTEM_AUTHORITIES_H

#include <openssl/ssl.h>

namespace reference::ws {

bool TrustSystemAuthorities(SSL_CTX* context);

}  // namespace reference::ws

#endif
