#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "tests/disk/child_process.h"

namespace disk {

std::intptr_t StartProcess(std::string program, std::string argument) {
  char* const arguments[] = {program.data(), argument.data(), nullptr};
  pid_t id = 0;
  if (posix_spawn(&id, program.c_str(), nullptr, nullptr, arguments, environ) == 0) return id;
  throw std::runtime_error("cannot start " + program);
}

void KillProcess(std::intptr_t process) {
  kill(static_cast<pid_t>(process), SIGKILL);
  waitpid(static_cast<pid_t>(process), nullptr, 0);
}

}  // namespace disk
