// What the operations of this library's connections and managers return. They reach the front end unchanged; -1 is left
// out because the layers above use it for failures of their own.
#ifndef REFERENCE_WS_INTERFACE_RESULT_CODES_H
#define REFERENCE_WS_INTERFACE_RESULT_CODES_H

#include <cstdint>

namespace reference::ws {

enum ResultCode : std::int32_t {
  kTaken = 0,
  // The connection is not authenticated: not yet, no longer, or never again after its end.
  kNotConnected = -101,
  // The peer reads too slowly; what is queued has reached its bound. Try again later.
  kQueueFull = -102,
  // A text has more than kMaxTextSize bytes.
  kTextTooLong = -103,
  // A null text, one that is not UTF-8, a number that JSON cannot carry, or a time-out of 0.
  kBadArgument = -104,
  // The I/O thread could not be started.
  kNoThread = -105
};

}  // namespace reference::ws

#endif
