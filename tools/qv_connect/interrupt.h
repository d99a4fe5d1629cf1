// Ctrl-C and termination requests, turned into a flag that the main thread looks at between its waits. A second one
// ends the program at once.
//
// Threads: InstallInterruptHandler once, by the main thread; Interrupted by any thread.
#ifndef TOOLS_QV_CONNECT_INTERRUPT_H
#define TOOLS_QV_CONNECT_INTERRUPT_H

namespace qv_connect {

void InstallInterruptHandler();
bool Interrupted();

}  // namespace qv_connect

#endif
