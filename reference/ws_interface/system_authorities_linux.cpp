#include "reference/ws_interface/system_authorities.h"

namespace reference::ws {

bool TrustSystemAuthorities(SSL_CTX* context) {
  return SSL_CTX_set_default_verify_paths(context) == 1;
}

}  // namespace reference::ws
