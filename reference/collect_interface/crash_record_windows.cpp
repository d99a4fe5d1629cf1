#include <windows.h>

#include <cstring>

#include "reference/collect_interface/crash_record.h"

namespace collect_interface {

void MakeDirectoryInCrash(const PathCharacter* directory) noexcept {
  ::CreateDirectoryW(directory, nullptr);
}

void AppendLineInCrash(const PathCharacter* file, const char* text) noexcept {
  const HANDLE handle = ::CreateFileW(file, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return;
  DWORD written = 0;
  ::WriteFile(handle, text, static_cast<DWORD>(std::strlen(text)), &written, nullptr);
  ::WriteFile(handle, "\r\n", 2, &written, nullptr);
  ::CloseHandle(handle);
}

}  // namespace collect_interface
