// A client of the cloud without the library: the same calls of libcurl and Beast, one after another on one thread.
//
// Threads: one. Ownership: a connection is closed before ToFirstFrame returns.
#ifndef BENCH_BARE_CLIENT_H
#define BENCH_BARE_CLIENT_H

#include <cstdint>
#include <string>

#include "reference/ws_interface/tls.h"

namespace bench {

struct BareSession {
  std::string sessionId;
  std::string host;
  std::uint16_t port = 0;
};

// Asks the cloud for a session. Throws std::runtime_error when it gives none.
BareSession RequestSession(const std::string& baseUrl);

// Connects, trusting whom it is told to, and returns with the first frame. Throws boost::system::system_error when
// something fails.
void ToFirstFrame(const BareSession& session, reference::ws::TlsTrust& trust);

}  // namespace bench

#endif
