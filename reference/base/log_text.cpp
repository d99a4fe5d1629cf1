#include "reference/base/log_text.h"

#include <algorithm>
#include <cstdio>

namespace base {
namespace {

int Measure(const char* format, std::va_list arguments) {
  std::va_list copy;
  va_copy(copy, arguments);
  // The analyzer does not see that va_copy has initialised it.
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
  const int length = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  return length;
}

bool IsControl(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte < 0x20 || byte == 0x7f;
}

}  // namespace

std::string FormatLogText(const char* format, std::va_list arguments) {
  const int length = Measure(format, arguments);
  if (length < 0) return format;
  std::string text(static_cast<std::size_t>(length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  std::replace_if(text.begin(), text.end(), IsControl, ' ');
  return text;
}

}  // namespace base
