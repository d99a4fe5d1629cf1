// The operators new of the program: they can be told to fail, and they count what has not been freed.
//
// Threads: any; allocations count and fail on every thread that is not inside fakes::Uncounted. Ownership: none.
#ifndef TESTS_ALLOCATION_FAILING_ALLOCATIONS_H
#define TESTS_ALLOCATION_FAILING_ALLOCATIONS_H

#include <cstdint>

namespace allocation {

enum class Mode { kOnce, kFromThenOn };

// From now on the allocation of that number fails, counted from 1; or it and all after it.
void Arm(std::uint64_t number, Mode mode);
// Says how many have failed.
std::uint64_t Disarm();
std::uint64_t FailedSoFar();
// Blocks that were counted when they were allocated, and are not freed.
std::int64_t Live();

}  // namespace allocation

#endif
