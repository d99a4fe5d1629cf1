// What this process holds of the system at the moment.
#ifndef BENCH_PROCESS_H
#define BENCH_PROCESS_H

#include <cstdint>

namespace bench {

struct Holdings {
  std::int64_t heapBytes = 0;      // allocated and not freed
  std::int64_t residentBytes = 0;  // thread stacks and the allocator's reserve included
  std::int64_t threads = 0;
  std::int64_t descriptors = 0;
};

Holdings CountHoldings();

// As many descriptors as the system lets this process have; returns the limit in force.
std::int64_t RaiseDescriptorLimit();

}  // namespace bench

#endif
