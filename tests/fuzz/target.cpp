// One fuzz target: FUZZ_CHECK names its check.
#include <cstddef>
#include <cstdint>

#include "tests/fuzz/checks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::FUZZ_CHECK({reinterpret_cast<const char*>(data), size});
  return 0;
}
