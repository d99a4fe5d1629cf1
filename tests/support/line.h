// A call as a line of text: "operation(argument, ...)".
//
// Threads: any. Ownership: none.
#ifndef TESTS_SUPPORT_LINE_H
#define TESTS_SUPPORT_LINE_H

#include <sstream>
#include <string>

namespace tests {

inline std::string Shown(const char* text) {
  return text ? text : "null";
}
template <class Value>
const Value& Shown(const Value& value) {
  return value;
}

template <class... Arguments>
std::string Line(const std::string& operation, const Arguments&... arguments) {
  std::ostringstream line;
  line << operation << '(';
  [[maybe_unused]] const char* separator = "";
  ((line << separator << Shown(arguments), separator = ", "), ...);
  line << ')';
  return line.str();
}

}  // namespace tests

#endif
