// Whether a text is UTF-8, as every text on the network must be: what is not comes back from JSON as another text.
//
// Threads: pure functions. Ownership: the view is read during the call only.
#ifndef REFERENCE_COMMON_UTF8_H
#define REFERENCE_COMMON_UTF8_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace reference {

// Bytes of the UTF-8 sequence that text begins with, 0 when it begins with none.
inline std::size_t Utf8SequenceSize(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t first = byte(0);
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4) return 0;
  const std::size_t size = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (text.size() < size) return 0;
  // Overlong forms, surrogates and what lies past U+10FFFF show in the second byte.
  const std::uint8_t lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
  const std::uint8_t highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
  if (byte(1) < lowest || byte(1) > highest) return 0;
  for (std::size_t i = 2; i < size; ++i) {
    if (byte(i) < 0x80 || byte(i) > 0xBF) return 0;
  }
  return size;
}

inline bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t size = Utf8SequenceSize(text);
    if (size == 0) return false;
    text.remove_prefix(size);
  }
  return true;
}

}  // namespace reference

#endif
