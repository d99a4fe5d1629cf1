// Text for a crash handler: builds lines in a buffer of its own and writes them with write().
//
// Threads: one at a time. Async-signal-safe: no allocation, no lock, no locale.
// Ownership: borrows the file descriptor.
#ifndef REFERENCE_BASE_CRASH_TEXT_LINUX_H
#define REFERENCE_BASE_CRASH_TEXT_LINUX_H

#include <unistd.h>

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace base {

// What does not fit is cut.
template <std::size_t kCapacity>
class CrashText {
 public:
  CrashText& Add(const char* text) {
    while (*text != '\0' && length + 1 < kCapacity) bytes[length++] = *text++;
    bytes[length] = '\0';
    return *this;
  }

  CrashText& AddNumber(std::int64_t number) {
    std::array<char, 24> digits{};
    std::to_chars(digits.data(), digits.data() + digits.size() - 1, number);
    return Add(digits.data());
  }

  CrashText& AddHex(std::uint64_t number) {
    std::array<char, 24> digits{};
    std::to_chars(digits.data(), digits.data() + digits.size() - 1, number, 16);
    return Add("0x").Add(digits.data());
  }

  const char* Text() const { return bytes.data(); }

  void WriteLine(int descriptor) {
    bytes[length++] = '\n';
    WriteAll(descriptor, bytes.data(), length);
    Clear();
  }

  void Clear() {
    length = 0;
    bytes[0] = '\0';
  }

  static void WriteAll(int descriptor, const char* data, std::size_t size) {
    while (size > 0) {
      const ssize_t written = ::write(descriptor, data, size);
      if (written <= 0) return;
      data += written;
      size -= static_cast<std::size_t>(written);
    }
  }

 private:
  std::array<char, kCapacity + 1> bytes{};
  std::size_t length = 0;
};

}  // namespace base

#endif
