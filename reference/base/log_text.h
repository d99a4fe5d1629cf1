// Makes the text of a line from a printf format and its arguments.
// Threads: no state. Ownership: the arguments are read during the call only; the caller ends them.
#ifndef REFERENCE_BASE_LOG_TEXT_H
#define REFERENCE_BASE_LOG_TEXT_H

#include <cstdarg>
#include <string>

namespace base {

// Of any length. Control characters become spaces, so that no text from outside can begin a line of its own. A format
// that the C library refuses is returned as it stands.
std::string FormatLogText(const char* format, std::va_list arguments);

}  // namespace base

#endif
