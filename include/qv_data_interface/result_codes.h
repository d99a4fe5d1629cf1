/// @file
/// The codes that the library itself reports through IQVDataInterfaceNotic::OnStatus. Other codes there are the cloud
/// service's own and come with the service's text.
#ifndef QV_DATA_INTERFACE_RESULT_CODES_H
#define QV_DATA_INTERFACE_RESULT_CODES_H

#include <cstdint>

namespace qv_data_interface {

/// What OnStatus reports. docs/result-codes.md says what to do about each.
enum QvResultCode : std::int32_t {
  /// "success": the connection to the phone stands.
  kResultSuccess = 0,

  /// "web socket init failed": no connection object could be made for the instance's endpoints.
  kResultWsInitFailed = 60701001,
  /// "web socket disconnect": the connection is lost, could not be made, or was refused.
  kResultWsDisconnect = 60701002,
  /// "web socket connecting": an attempt to connect has begun, the first one or a later one.
  kResultWsConnecting = 60701003,

  /// "Http Req for phone-connect failed": no answer came back, or none that can be read.
  kResultPhoneConnectFailed = 60702001,
  /// "Http Req for phone-connect can not get 200": the answer's HTTP status is another one.
  kResultPhoneConnectNot200 = 60702002,
  /// "Http Req for refresh-session failed": no answer came back, or none that can be read.
  kResultRefreshSessionFailed = 60702003,
  /// "Http Req for refresh-session can not get 200": the answer's HTTP status is another one.
  kResultRefreshSessionNot200 = 60702004
};

}  // namespace qv_data_interface

#endif
