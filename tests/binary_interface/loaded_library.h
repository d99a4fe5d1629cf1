// A shared library that the test program loads at run time, as a host with plug-ins does.
// Threads: any. Ownership: the object frees what it loaded.
#ifndef TESTS_BINARY_INTERFACE_LOADED_LIBRARY_H
#define TESTS_BINARY_INTERFACE_LOADED_LIBRARY_H

#include <cstddef>
#include <string>

namespace tests {

class LoadedLibrary {
 public:
  // Throws std::runtime_error with the system's reason.
  explicit LoadedLibrary(const std::string& file);
  ~LoadedLibrary();
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

  // The function that the library exports under this name; throws std::runtime_error when it exports none.
  template <typename Function>
  Function* Find(const char* exportedName) const {
    return reinterpret_cast<Function*>(Address(exportedName));
  }

 private:
  using AnyFunction = void (*)();
  AnyFunction Address(const char* exportedName) const;

  void* handle;
};

// What the process holds now.
struct ProcessFigures {
  std::size_t threads;
  std::size_t handles;  // open files and the like
  std::size_t memory;   // bytes of its own
};
ProcessFigures CurrentFigures();

}  // namespace tests

#endif
