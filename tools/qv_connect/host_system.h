// The few things of the operating system that standard C++ does not offer.
//
// Threads: SetEnvironment before any thread exists; the others from any thread. Texts are copied.
#ifndef TOOLS_QV_CONNECT_HOST_SYSTEM_H
#define TOOLS_QV_CONNECT_HOST_SYSTEM_H

#include <cstddef>
#include <filesystem>
#include <string>

namespace qv_connect {

// False when the system refuses.
bool SetEnvironment(const std::string& name, const std::string& value);
// Empty when there is no such variable.
std::string Environment(const char* name);

bool InputIsTerminal();
bool OutputIsTerminal();
bool ErrorOutputIsTerminal();

// The width of the terminal on the output or the error output; 80 without one.
std::size_t TerminalColumns();
// NO_COLOR is how a user says that it is not.
inline bool ColourIsWelcome() {
  return Environment("NO_COLOR").empty();
}
// Whether what is printed may hold UTF-8.
bool OutputTakesUtf8();

// Where this program keeps its files for the user when it is told nothing else.
std::filesystem::path UserDataDirectory();

}  // namespace qv_connect

#endif
