#include "surface/result_messages.h"

#include "qv_data_interface/result_codes.h"

namespace qv_data_interface {
namespace {

struct ResultMessageEntry {
  std::int32_t code;
  const char* message;
};

// Plain constants: nothing is made when the library is loaded, and a service's thread that reports while the process
// ends still finds them.
constexpr ResultMessageEntry resultCodeMessages[] = {
    {kResultSuccess, "success"},
    {kResultWsInitFailed, "web socket init failed"},
    {kResultWsDisconnect, "web socket disconnect"},
    {kResultWsConnecting, "web socket connecting"},
    {kResultPhoneConnectFailed, "Http Req for phone-connect failed"},
    {kResultPhoneConnectNot200, "Http Req for phone-connect can not get 200"},
    {kResultRefreshSessionFailed, "Http Req for refresh-session failed"},
    {kResultRefreshSessionNot200, "Http Req for refresh-session can not get 200"},
};

}  // namespace

const char* ResultMessage(std::int32_t code) {
  for (const ResultMessageEntry& entry : resultCodeMessages) {
    if (entry.code == code) return entry.message;
  }
  return "";
}

}  // namespace qv_data_interface
