// TLS as every connection uses it: version 1.2 or later, the certificate and the host name verified always.
//
// Threads: TlsTrust from any; ExpectHost one at a time for each SSL. Ownership: a context is shared by its users.
#ifndef REFERENCE_WS_INTERFACE_TLS_H
#define REFERENCE_WS_INTERFACE_TLS_H

#include <boost/asio/ssl/context.hpp>
#include <memory>
#include <mutex>
#include <string>

namespace reference::ws {

// Whom the connections trust: reference::AuthorityFile(), or the system's authorities when there is none. A context
// takes half a millisecond to make, with the system's authorities up to a tenth of a second, and a hundred kilobytes;
// so one serves until the file says something else.
class TlsTrust {
 public:
  // The file is read each time, so that a corrected one takes effect; the system's authorities are read once. Throws
  // std::runtime_error with a text for the log.
  std::shared_ptr<boost::asio::ssl::context> Context();

  // Makes ahead what the first connection on the calling thread would wait for. What fails here fails there, with its
  // reason.
  void Prepare() noexcept;

 private:
  std::mutex mutex;
  // Guarded by mutex. The file's text; empty for the system's authorities, for an empty file is refused.
  std::string authorities;
  std::shared_ptr<boost::asio::ssl::context> context;
};

// Makes the handshake ask for host, a name or an address, and refuse another's certificate. False when out of memory.
bool ExpectHost(SSL* tls, const std::string& host);

}  // namespace reference::ws

#endif
