// Makes the connections and gives them their share in a thread.
//
// Threads: every operation from any thread, from inside a notice too. Ownership: holds each connection until it is
// destroyed or the manager stops; a connection object that outlives both answers with kNotConnected.
#ifndef REFERENCE_WS_INTERFACE_WS_MANAGER_H
#define REFERENCE_WS_INTERFACE_WS_MANAGER_H

#include <chrono>
#include <memory>
#include <mutex>
#include <vector>

#include "reference/ws_interface/connection.h"
#include "reference/ws_interface/shared_io_thread.h"
#include "ws_interface/ws_manager_interface.h"

namespace reference::ws {

class WsManager final : public ws_interface::IWSManagerInterface {
 public:
  WsManager() = default;
  ~WsManager() override;
  WsManager(const WsManager&) = delete;
  WsManager& operator=(const WsManager&) = delete;

  // wsManagerValue: the time-out of the connections made from now on, in ms, not 0. value is not read.
  std::int32_t Initialise(std::int32_t value, std::uint32_t wsManagerValue) override;
  std::shared_ptr<ws_interface::IWSInterface> CreateWS(const char* credential1, const char* url,
                                                       const ws_interface::WSConnectInfo* connectInfo,
                                                       const ws_interface::WSVideoInfo* videoInfo,
                                                       const ws_interface::WSDefaultParam* defaultParam,
                                                       const ws_interface::WSSystemParam* systemParam,
                                                       std::shared_ptr<ws_interface::IWSInterfaceNotic> notic,
                                                       std::uint64_t reserved) override;
  // An object of another manager, or one destroyed already, is left alone.
  void DestroyWS(std::shared_ptr<ws_interface::IWSInterface> connection) override;
  void Reserved4() override {}
  void Stop() override;

 private:
  std::shared_ptr<Connection> AnyStopped();
  void Forget(const std::shared_ptr<Connection>& closed);

  std::mutex managerMutex;
  // Empty until Initialise and from Stop on.
  std::shared_ptr<SharedIoThread> ioThread;
  std::chrono::milliseconds timeout{};
  std::vector<std::shared_ptr<Connection>> connections;
};

}  // namespace reference::ws

#endif
