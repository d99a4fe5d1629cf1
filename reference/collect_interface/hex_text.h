// Bytes as digits: "00ff".
//
// Threads: no state. Ownership: everything is a value.
#ifndef REFERENCE_COLLECT_INTERFACE_HEX_TEXT_H
#define REFERENCE_COLLECT_INTERFACE_HEX_TEXT_H

#include <span>
#include <string>

namespace collect_interface {

inline std::string HexText(std::span<const unsigned char> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const unsigned char byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

}  // namespace collect_interface

#endif
