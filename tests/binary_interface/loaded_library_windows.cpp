#include <windows.h>

// After windows.h, which it needs.
#include <tlhelp32.h>

#include <array>
#include <stdexcept>

#include "tests/binary_interface/loaded_library.h"

namespace tests {

LoadedLibrary::LoadedLibrary(const std::string& file) : handle(LoadLibraryA(file.c_str())) {
  if (handle == nullptr) throw std::runtime_error(file + ": system error " + std::to_string(GetLastError()));
}

LoadedLibrary::~LoadedLibrary() {
  FreeLibrary(static_cast<HMODULE>(handle));
}

LoadedLibrary::AnyFunction LoadedLibrary::Address(const char* exportedName) const {
  const FARPROC address = GetProcAddress(static_cast<HMODULE>(handle), exportedName);
  if (address == nullptr) throw std::runtime_error(std::string("no export ") + exportedName);
  return reinterpret_cast<AnyFunction>(address);
}

namespace {

std::size_t CountThreads() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  std::size_t count = 0;
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = Thread32First(snapshot, &entry); more != FALSE; more = Thread32Next(snapshot, &entry)) {
    if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
  }
  CloseHandle(snapshot);
  return count;
}

// Not GetProcessHandleCount: Wine always says 0. Handles are multiples of four, and a closed one is refused.
std::size_t CountHandles() {
  std::size_t count = 0;
  for (std::uintptr_t value = 4; value < 0x10000; value += 4) {
    DWORD flags = 0;
    if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != FALSE) ++count;
  }
  return count;
}

// Not the process's private bytes: Wine does not count them.
std::size_t BytesInHeaps() {
  std::array<HANDLE, 64> heaps{};
  const DWORD heapCount = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
  std::size_t bytes = 0;
  for (DWORD i = 0; i < heapCount && i < heaps.size(); ++i) {
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(heaps[i]);
    while (HeapWalk(heaps[i], &entry) != FALSE) {
      if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) bytes += entry.cbData;
    }
    HeapUnlock(heaps[i]);
  }
  return bytes;
}

}  // namespace

ProcessFigures CurrentFigures() {
  return {CountThreads(), CountHandles(), BytesInHeaps()};
}

}  // namespace tests
