// Paths as UTF-8 texts, which is what SQLite, OpenSSL and libcurl take on every system. std::filesystem::path takes and
// gives narrow texts in a code page of the system's on some.
#ifndef REFERENCE_COMMON_PATH_TEXT_H
#define REFERENCE_COMMON_PATH_TEXT_H

#include <filesystem>
#include <string>
#include <string_view>

namespace reference {

inline std::string Utf8Text(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

inline std::filesystem::path PathOf(std::string_view utf8) {
  return std::u8string(utf8.begin(), utf8.end());
}

}  // namespace reference

#endif
