// Another process, to be killed.
//
// Threads: any. Ownership: what is started is killed once.
#ifndef TESTS_DISK_CHILD_PROCESS_H
#define TESTS_DISK_CHILD_PROCESS_H

#include <cstdint>
#include <string>

namespace disk {

// The arguments hold no blanks. Throws std::runtime_error when it cannot be started.
std::intptr_t StartProcess(std::string program, std::string argument);
// Without any notice to it; returns when it is gone.
void KillProcess(std::intptr_t process);

}  // namespace disk

#endif
