// The sessions that the cloud has granted. They do not depend on connections, so that a client which kept one can
// connect with it.
//
// Threads: one thread at a time. Ownership: texts are copied.
#ifndef QV_CLOUD_SESSIONS_H
#define QV_CLOUD_SESSIONS_H

#include <chrono>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

namespace qv_cloud {

// Since 1970-01-01 UTC, never going back while the process runs.
using Time = std::chrono::microseconds;
Time Now();

class Sessions {
 public:
  // prefix: what each id begins with.
  Sessions(std::chrono::milliseconds validity, std::string prefix) : validity(validity), prefix(std::move(prefix)) {}

  struct Granted {
    std::string id;
    std::chrono::milliseconds expires;
  };
  // Empty when too many sessions are open.
  std::optional<Granted> Grant(Time now);
  // A new session in place of one that was granted, which may have expired a while ago; empty when it is not known.
  std::optional<Granted> Refresh(const std::string& id, Time now);

  bool IsValid(const std::string& id, Time now) const;
  // Like IsValid; when once is set, true for one authentication of each session only.
  bool Authenticate(const std::string& id, Time now, bool once);

 private:
  struct Session {
    Time expires;
    bool used = false;
  };
  void Prune(Time now);

  const std::chrono::milliseconds validity;
  const std::string prefix;
  std::unordered_map<std::string, Session> sessions;
};

}  // namespace qv_cloud

#endif
