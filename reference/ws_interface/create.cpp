#include "reference/ws_interface/ws_manager.h"

namespace ws_interface {

std::shared_ptr<IWSManagerInterface> IWSManagerInterface::Create() {
  return std::make_shared<reference::ws::WsManager>();
}

}  // namespace ws_interface
