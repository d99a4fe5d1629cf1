#include "tools/qv_connect/result_help.h"

#include <algorithm>
#include <iterator>

#include "qv_data_interface/result_codes.h"

namespace qv_connect {
namespace {

using namespace qv_data_interface;

constexpr struct {
  std::int32_t code;
  ResultHelp help;
} kHelp[] = {
    {kResultWsInitFailed,
     {"web socket init failed", "The session's endpoints or texts cannot be used, or memory is short.",
      "Look in the log for the WebSocket library's line. The next connection takes the same session from the cache: "
      "remove session_cache.db to ask for a new one."}},
    {kResultWsDisconnect,
     {"web socket disconnect", "The connection was lost or could not be made.",
      "Wait: it is rebuilt without help, unless a code of the cloud came just before. The log names the reason."}},
    {kResultPhoneConnectFailed,
     {"Http Req for phone-connect failed",
      "No answer came, or none that can be read: no network, a wrong address, an untrusted certificate, a time-out.",
      "The log names the reason with libcurl's code. Try again after a pause when it was the network; a certificate "
      "needs its authority."}},
    {kResultPhoneConnectNot200,
     {"Http Req for phone-connect can not get 200", "The service, or a proxy before it, answered with another status.",
      "The log has the status. For 5xx try again after a pause; 4xx will not change by itself."}},
    {kResultRefreshSessionFailed,
     {"Http Req for refresh-session failed", "The session could not be renewed; the connection was left as it was.",
      "If the picture stays away, release and connect again."}},
    {kResultRefreshSessionNot200,
     {"Http Req for refresh-session can not get 200",
      "The session could not be renewed: the service answered with another status.",
      "If the picture stays away and the status in the log is 5xx, release and connect again."}},
    {60101001,
     {"", "qv_cloud refused the session or its authentication.",
      "Release and connect again. A refused session stays in the cache: remove session_cache.db to ask for a new "
      "one."}},
};

constexpr ResultHelp kOfTheService{"", "The cloud service's own code: it refused, or reported something.",
                                   "See the documentation of the service."};

}  // namespace

const ResultHelp& HelpFor(const std::string& code) {
  const auto* const found = std::find_if(std::begin(kHelp), std::end(kHelp),
                                         [&](const auto& entry) { return std::to_string(entry.code) == code; });
  return found != std::end(kHelp) ? found->help : kOfTheService;
}

}  // namespace qv_connect
