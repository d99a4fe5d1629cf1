#include <io.h>
#include <windows.h>

#include <cstdlib>

#include "tools/qv_connect/host_system.h"

namespace qv_connect {

bool SetEnvironment(const std::string& name, const std::string& value) {
  return _putenv_s(name.c_str(), value.c_str()) == 0;
}

std::string Environment(const char* name) {
  const char* text = std::getenv(name);
  return text != nullptr ? text : "";
}

bool InputIsTerminal() {
  return _isatty(0) != 0;
}

bool OutputIsTerminal() {
  return _isatty(1) != 0;
}

bool ErrorOutputIsTerminal() {
  return _isatty(2) != 0;
}

std::size_t TerminalColumns() {
  for (const DWORD handle : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(GetStdHandle(handle), &info) == 0) continue;
    return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1);
  }
  return 80;
}

bool OutputTakesUtf8() {
  return GetConsoleOutputCP() == CP_UTF8;
}

std::filesystem::path UserDataDirectory() {
  const std::string local = Environment("LOCALAPPDATA");
  return (local.empty() ? std::filesystem::temp_directory_path() : std::filesystem::path(local)) / "qv_connect";
}

}  // namespace qv_connect
