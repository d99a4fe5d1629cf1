// Marks what a thread does as the test's own: the allocation sweeps (tests/allocation) neither fail nor count it.
//
// Threads: each has its own mark. Ownership: none.
#ifndef TESTS_SUPPORT_UNCOUNTED_H
#define TESTS_SUPPORT_UNCOUNTED_H

#include <utility>

namespace tests {

class Uncounted {
 public:
  Uncounted() { ++depth; }
  ~Uncounted() { --depth; }
  Uncounted(const Uncounted&) = delete;
  Uncounted& operator=(const Uncounted&) = delete;

  static bool IsInside() { return depth > 0; }
  static void RestOfThisThread() { ++depth; }

 private:
  friend class Counted;
  inline static constinit thread_local int depth = 0;
};

// The other way round, for a call into what is tested from a thread of the test's.
class Counted {
 public:
  Counted() : depthAround(std::exchange(Uncounted::depth, 0)) {}
  ~Counted() { Uncounted::depth = depthAround; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

 private:
  const int depthAround;
};

}  // namespace tests

#endif
