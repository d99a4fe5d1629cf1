/// @file
/// Makes and ends WebSocket connections.
///
/// Threads: every operation may be called from any thread, from inside a notice too.
#ifndef SDK_WS_INTERFACE_WS_MANAGER_INTERFACE_H
#define SDK_WS_INTERFACE_WS_MANAGER_INTERFACE_H

#include <cstdint>
#include <memory>

#include "ws_interface/export.h"
#include "ws_interface/ws_interface.h"
#include "ws_interface/ws_interface_notic.h"
#include "ws_interface/ws_records.h"

namespace ws_interface {

/// The connections of one controller.
class IWSManagerInterface {
 public:
  /// A new, independent manager. When it is empty, Init fails.
  SDK_WS_INTERFACE_API static std::shared_ptr<IWSManagerInterface> Create();

  /// value: handed on as it is; wsManagerValue is in ms. Returns 0, or a reason of the library's own. May be called
  /// again on the same object.
  virtual std::int32_t Initialise(std::int32_t value, std::uint32_t wsManagerValue) = 0;
  /// Starts a connection to url ("ws://" or "wss://", domain, ":", port) and returns its object, or nothing. Records
  /// and texts are copied during the call. Notices may come before it returns. reserved is handed on as it is.
  virtual std::shared_ptr<IWSInterface> CreateWS(const char* credential1, const char* url,
                                                 const WSConnectInfo* connectInfo, const WSVideoInfo* videoInfo,
                                                 const WSDefaultParam* defaultParam, const WSSystemParam* systemParam,
                                                 std::shared_ptr<IWSInterfaceNotic> notic, std::uint64_t reserved) = 0;
  /// Ends a connection. Waits for a notice in flight, unless called from inside a notice of any service: two services
  /// that stop each other from inside their notices would wait for ever. Afterwards none begins.
  virtual void DestroyWS(std::shared_ptr<IWSInterface> connection) = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved4() = 0;
  /// Ends all connections in the same way; CreateWS then returns nothing until Initialise.
  virtual void Stop() = 0;

  virtual ~IWSManagerInterface() = default;
};

}  // namespace ws_interface

#endif
