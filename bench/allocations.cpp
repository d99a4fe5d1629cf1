#include "bench/allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::uint64_t allocations = 0;

void* Counted(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  ++allocations;
  return memory;
}

}  // namespace

void* operator new(std::size_t size) {
  return Counted(std::malloc(size));
}

void* operator new(std::size_t size, std::align_val_t alignment) {
  const auto boundary = static_cast<std::size_t>(alignment);
  return Counted(std::aligned_alloc(boundary, (size + boundary - 1) / boundary * boundary));
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::align_val_t) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  std::free(memory);
}

std::uint64_t bench::AllocationsOfThisThread() {
  return allocations;
}
