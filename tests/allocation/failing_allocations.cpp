#include "tests/allocation/failing_allocations.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#include "tests/support/uncounted.h"

namespace allocation {
namespace {

constinit std::atomic<bool> armed{false};
constinit std::atomic<Mode> currentMode{Mode::kOnce};
constinit std::atomic<std::uint64_t> failingNumber{0};
constinit std::atomic<std::uint64_t> asked{0};
constinit std::atomic<std::uint64_t> failed{0};
constinit std::atomic<std::int64_t> live{0};

// Stands right before each block.
struct alignas(__STDCPP_DEFAULT_NEW_ALIGNMENT__) Header {
  void* origin;
  bool counted;
};
static_assert(sizeof(Header) == __STDCPP_DEFAULT_NEW_ALIGNMENT__);

bool IsToFail() {
  if (!armed) return false;
  const std::uint64_t number = ++asked;
  if (currentMode == Mode::kOnce ? number != failingNumber : number < failingNumber) return false;
  ++failed;
  return true;
}

void* Allocate(std::size_t size, std::size_t alignment) noexcept {
  const bool counted = !tests::Uncounted::IsInside();
  if (counted && IsToFail()) return nullptr;
  void* const origin = std::malloc(size + sizeof(Header) + alignment);
  if (origin == nullptr) return nullptr;
  const auto least = reinterpret_cast<std::uintptr_t>(origin) + sizeof(Header);
  const std::uintptr_t block = (least + alignment - 1) / alignment * alignment;
  new (reinterpret_cast<void*>(block - sizeof(Header))) Header{origin, counted};
  if (counted) ++live;
  return reinterpret_cast<void*>(block);
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment) {
  if (void* const block = Allocate(size, alignment)) return block;
  throw std::bad_alloc();
}

void Free(void* block) noexcept {
  if (block == nullptr) return;
  const Header header = *(static_cast<Header*>(block) - 1);
  if (header.counted) --live;
  std::free(header.origin);
}

constexpr std::size_t kPlain = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

std::size_t Bytes(std::align_val_t alignment) {
  return std::max(static_cast<std::size_t>(alignment), kPlain);
}

}  // namespace

void Arm(std::uint64_t number, Mode mode) {
  currentMode = mode;
  failingNumber = number;
  asked = 0;
  failed = 0;
  armed = true;
}

std::uint64_t Disarm() {
  armed = false;
  return failed;
}

std::uint64_t FailedSoFar() {
  return failed;
}

std::int64_t Live() {
  return live;
}

}  // namespace allocation

using allocation::Allocate;
using allocation::AllocateOrThrow;
using allocation::Bytes;
using allocation::Free;
using allocation::kPlain;
using std::align_val_t;
using std::nothrow_t;
using std::size_t;

// clang-format off
#define QV_BOTH_FORMS(keyword) \
  void* operator new keyword(size_t size) { return AllocateOrThrow(size, kPlain); } \
  void* operator new keyword(size_t size, align_val_t align) { return AllocateOrThrow(size, Bytes(align)); } \
  void* operator new keyword(size_t size, const nothrow_t&) noexcept { return Allocate(size, kPlain); } \
  void* operator new keyword(size_t size, align_val_t align, const nothrow_t&) noexcept { \
    return Allocate(size, Bytes(align)); \
  } \
  void operator delete keyword(void* block) noexcept { Free(block); } \
  void operator delete keyword(void* block, size_t) noexcept { Free(block); } \
  void operator delete keyword(void* block, align_val_t) noexcept { Free(block); } \
  void operator delete keyword(void* block, size_t, align_val_t) noexcept { Free(block); } \
  void operator delete keyword(void* block, const nothrow_t&) noexcept { Free(block); } \
  void operator delete keyword(void* block, align_val_t, const nothrow_t&) noexcept { Free(block); }

QV_BOTH_FORMS()
QV_BOTH_FORMS([])
// clang-format on
