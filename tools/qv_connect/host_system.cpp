#include "tools/qv_connect/host_system.h"

#include <cstdlib>
#include <string_view>

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace qv_connect {
namespace {

std::string Environment(const char* name) {
  const char* text = std::getenv(name);
  return text != nullptr ? text : "";
}

bool IsTerminal(int descriptor) {
#ifdef _WIN32
  return _isatty(descriptor) != 0;
#else
  return isatty(descriptor) != 0;
#endif
}

}  // namespace

bool SetEnvironment(const std::string& name, const std::string& value) {
#ifdef _WIN32
  return _putenv_s(name.c_str(), value.c_str()) == 0;
#else
  return setenv(name.c_str(), value.c_str(), 1) == 0;
#endif
}

bool InputIsTerminal() {
  return IsTerminal(0);
}

bool OutputIsTerminal() {
  return IsTerminal(1);
}

bool ErrorOutputIsTerminal() {
  return IsTerminal(2);
}

std::size_t TerminalColumns() {
#ifdef _WIN32
  CONSOLE_SCREEN_BUFFER_INFO info{};
  for (const DWORD handle : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
    if (GetConsoleScreenBufferInfo(GetStdHandle(handle), &info) == 0) continue;
    return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1);
  }
#else
  for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  }
#endif
  return 80;
}

bool ColourIsWelcome() {
  return Environment("NO_COLOR").empty();
}

bool OutputTakesUtf8() {
#ifdef _WIN32
  return GetConsoleOutputCP() == CP_UTF8;
#else
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const std::string locale = Environment(name);
    if (locale.empty()) continue;
    return locale.find("UTF-8") != std::string::npos || locale.find("utf8") != std::string::npos;
  }
  return false;
#endif
}

std::filesystem::path UserDataDirectory() {
#ifdef _WIN32
  const std::string local = Environment("LOCALAPPDATA");
  if (!local.empty()) return std::filesystem::path(local) / "qv_connect";
#else
  const std::string data = Environment("XDG_DATA_HOME");
  if (!data.empty()) return std::filesystem::path(data) / "qv_connect";
  const std::string home = Environment("HOME");
  if (!home.empty()) return std::filesystem::path(home) / ".local" / "share" / "qv_connect";
#endif
  return std::filesystem::temp_directory_path() / "qv_connect";
}

}  // namespace qv_connect
