// Counts the calling thread's calls of operator new, which this program replaces.
#ifndef BENCH_ALLOCATIONS_H
#define BENCH_ALLOCATIONS_H

#include <cstdint>

namespace bench {

std::uint64_t AllocationsOfThisThread();

}  // namespace bench

#endif
