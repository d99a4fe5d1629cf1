#include <windows.h>

#include <stdexcept>

#include "tests/disk/child_process.h"

namespace disk {

std::intptr_t StartProcess(std::string program, std::string argument) {
  std::string command = program + " " + argument;
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started{};
  if (CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started) == 0) {
    throw std::runtime_error("cannot start " + program);
  }
  CloseHandle(started.hThread);
  return reinterpret_cast<std::intptr_t>(started.hProcess);
}

void KillProcess(std::intptr_t process) {
  const auto handle = reinterpret_cast<HANDLE>(process);
  TerminateProcess(handle, 1);
  WaitForSingleObject(handle, INFINITE);
  CloseHandle(handle);
}

}  // namespace disk
