#include "bench/process.h"

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace bench {
namespace {

std::int64_t EntriesIn(const char* directory) {
  return std::distance(std::filesystem::directory_iterator(directory), std::filesystem::directory_iterator());
}

}  // namespace

Holdings CountHoldings() {
  const struct mallinfo2 heap = mallinfo2();
  std::int64_t pages = 0;
  std::ifstream("/proc/self/statm").ignore(64, ' ') >> pages;
  return {static_cast<std::int64_t>(heap.uordblks + heap.hblkhd), pages * sysconf(_SC_PAGESIZE),
          EntriesIn("/proc/self/task"), EntriesIn("/proc/self/fd")};
}

std::int64_t RaiseDescriptorLimit() {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
  getrlimit(RLIMIT_NOFILE, &limit);
  return static_cast<std::int64_t>(limit.rlim_cur);
}

}  // namespace bench
