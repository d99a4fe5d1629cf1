#include <dlfcn.h>
#include <malloc.h>

#include <filesystem>
#include <stdexcept>

#include "tests/binary_interface/loaded_library.h"

namespace tests {

LoadedLibrary::LoadedLibrary(const std::string& file) : handle(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle == nullptr) throw std::runtime_error(dlerror());
}

LoadedLibrary::~LoadedLibrary() {
  dlclose(handle);
}

LoadedLibrary::AnyFunction LoadedLibrary::Address(const char* exportedName) const {
  void* const address = dlsym(handle, exportedName);
  if (address == nullptr) throw std::runtime_error(dlerror());
  return reinterpret_cast<AnyFunction>(address);
}

ProcessFigures CurrentFigures() {
  const auto count = [](const char* directory) {
    const std::filesystem::directory_iterator entries(directory);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
  };
  return {count("/proc/self/task"), count("/proc/self/fd"), mallinfo2().uordblks};
}

}  // namespace tests
