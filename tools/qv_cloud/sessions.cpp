#include "tools/qv_cloud/sessions.h"

#include <openssl/rand.h>

#include <array>

namespace qv_cloud {
namespace {

constexpr std::size_t kMaxSessions = 100000;
constexpr std::size_t kPruneFrom = 1000;
// How long an expired session can still be refreshed.
constexpr auto kRefreshable = std::chrono::minutes(10);

std::optional<std::string> NewId(const std::string& prefix) {
  std::array<unsigned char, 16> random{};
  if (RAND_bytes(random.data(), static_cast<int>(random.size())) != 1) return std::nullopt;
  std::string id = prefix;
  for (const unsigned char byte : random) {
    id += "0123456789abcdef"[byte >> 4];
    id += "0123456789abcdef"[byte & 15];
  }
  return id;
}

}  // namespace

Time Now() {
  using std::chrono::duration_cast;
  using std::chrono::steady_clock;
  using std::chrono::system_clock;
  static const Time kOffset = duration_cast<Time>(system_clock::now().time_since_epoch()) -
                              duration_cast<Time>(steady_clock::now().time_since_epoch());
  return kOffset + duration_cast<Time>(steady_clock::now().time_since_epoch());
}

std::optional<Sessions::Granted> Sessions::Grant(Time now) {
  Prune(now);
  if (sessions.size() >= kMaxSessions) return std::nullopt;
  const std::optional<std::string> id = NewId(prefix);
  if (!id) return std::nullopt;
  const Time expires = now + validity;
  sessions[*id] = Session{expires};
  return Granted{*id, std::chrono::duration_cast<std::chrono::milliseconds>(expires)};
}

std::optional<Sessions::Granted> Sessions::Refresh(const std::string& id, Time now) {
  const auto found = sessions.find(id);
  if (found == sessions.end() || found->second.expires + kRefreshable <= now) return std::nullopt;
  return Grant(now);
}

bool Sessions::IsValid(const std::string& id, Time now) const {
  const auto found = sessions.find(id);
  return found != sessions.end() && now < found->second.expires;
}

bool Sessions::Authenticate(const std::string& id, Time now, bool once) {
  if (!IsValid(id, now)) return false;
  Session& session = sessions[id];
  if (once && session.used) return false;
  session.used = true;
  return true;
}

void Sessions::Prune(Time now) {
  if (sessions.size() < kPruneFrom) return;
  std::erase_if(sessions, [now](const auto& entry) { return entry.second.expires + kRefreshable <= now; });
}

}  // namespace qv_cloud
