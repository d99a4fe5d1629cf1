#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

#include "tools/qv_connect/host_system.h"

namespace qv_connect {

bool SetEnvironment(const std::string& name, const std::string& value) {
  return setenv(name.c_str(), value.c_str(), 1) == 0;
}

std::string Environment(const char* name) {
  const char* text = std::getenv(name);
  return text != nullptr ? text : "";
}

bool InputIsTerminal() {
  return isatty(STDIN_FILENO) != 0;
}

bool OutputIsTerminal() {
  return isatty(STDOUT_FILENO) != 0;
}

bool ErrorOutputIsTerminal() {
  return isatty(STDERR_FILENO) != 0;
}

std::size_t TerminalColumns() {
  for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  }
  return 80;
}

bool OutputTakesUtf8() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const std::string locale = Environment(name);
    if (locale.empty()) continue;
    return locale.find("UTF-8") != std::string::npos || locale.find("utf8") != std::string::npos;
  }
  return false;
}

std::filesystem::path UserDataDirectory() {
  const std::string data = Environment("XDG_DATA_HOME");
  if (!data.empty()) return std::filesystem::path(data) / "qv_connect";
  const std::string home = Environment("HOME");
  if (!home.empty()) return std::filesystem::path(home) / ".local" / "share" / "qv_connect";
  return std::filesystem::temp_directory_path() / "qv_connect";
}

}  // namespace qv_connect
