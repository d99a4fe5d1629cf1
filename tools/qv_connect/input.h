// Reads the standard input line by line into the event queue.
//
// Threads: starts one, which outlives the call and shares the queue. It is detached: a read of a terminal cannot be
// woken in a portable way, and the end of the process ends it.
#ifndef TOOLS_QV_CONNECT_INPUT_H
#define TOOLS_QV_CONNECT_INPUT_H

#include <memory>

#include "tools/qv_connect/events.h"

namespace qv_connect {

void StartReadingInput(std::shared_ptr<EventQueue> events);

}  // namespace qv_connect

#endif
