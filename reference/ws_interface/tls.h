// TLS as every connection uses it: version 1.2 or later, the certificate and the host name verified always.
//
// Threads: TlsContext from any; ExpectHost one at a time for each SSL. Ownership: a context is shared by its users.
#ifndef REFERENCE_WS_INTERFACE_TLS_H
#define REFERENCE_WS_INTERFACE_TLS_H

#include <boost/asio/ssl/context.hpp>
#include <memory>
#include <string>

namespace reference::ws {

// Trusts reference::AuthorityFile(), or the system's authorities when there is none. The system's are read once for the
// process, a file each time, so that a corrected one takes effect. Throws std::runtime_error with a text for the log.
std::shared_ptr<boost::asio::ssl::context> TlsContext();

// Makes the handshake ask for host, a name or an address, and refuse another's certificate. False when out of memory.
bool ExpectHost(SSL* tls, const std::string& host);

}  // namespace reference::ws

#endif
