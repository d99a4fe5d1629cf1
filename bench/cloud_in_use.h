// The clouds that the benchmarks connect to, and the real services while they do.
#ifndef BENCH_CLOUD_IN_USE_H
#define BENCH_CLOUD_IN_USE_H

#include <string>

#include "bench/cloud_process.h"

namespace bench {

// While one exists the factories hand out the real services, these trust the cloud with this delay, and no session of
// another cloud is in the cache. A cloud runs from its first use to the end of the program.
class CloudInUse {
 public:
  explicit CloudInUse(int delayMs = 0);
  ~CloudInUse();
  CloudInUse(const CloudInUse&) = delete;
  CloudInUse& operator=(const CloudInUse&) = delete;

  const std::string& BaseUrl() const { return cloud.baseUrl; }

 private:
  const CloudProcess& cloud;
};

// Throws std::runtime_error when the session cache cannot be written.
void EmptyTheCache();

}  // namespace bench

#endif
