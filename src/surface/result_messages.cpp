#include "surface/result_messages.h"

#include <map>

#include "qv_data_interface/result_codes.h"

namespace qv_data_interface {
namespace {

// Never destroyed: a service's thread may report while the process ends.
const std::map<int, std::string>& resultCodeMessages = *new std::map<int, std::string>{
    {kResultSuccess, "success"},
    {kResultWsInitFailed, "web socket init failed"},
    {kResultWsDisconnect, "web socket disconnect"},
    {kResultWsConnecting, "web socket connecting"},
    {kResultPhoneConnectFailed, "Http Req for phone-connect failed"},
    {kResultPhoneConnectNot200, "Http Req for phone-connect can not get 200"},
    {kResultRefreshSessionFailed, "Http Req for refresh-session failed"},
    {kResultRefreshSessionNot200, "Http Req for refresh-session can not get 200"},
};

const std::string& noMessage = *new std::string;

}  // namespace

const std::string& ResultMessage(std::int32_t code) {
  // Never inserts: the table is read by several notice threads at once.
  const auto found = resultCodeMessages.find(code);
  return found != resultCodeMessages.end() ? found->second : noMessage;
}

}  // namespace qv_data_interface
