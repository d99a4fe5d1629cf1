// Marks what a thread does as the test's own: the allocation sweep (tests/allocation) neither fails nor counts it.
//
// Threads: each has its own mark. Ownership: none.
#ifndef TESTS_LIBRARY_FAKES_UNCOUNTED_H
#define TESTS_LIBRARY_FAKES_UNCOUNTED_H

namespace fakes {

class Uncounted {
 public:
  Uncounted();
  ~Uncounted();
  Uncounted(const Uncounted&) = delete;
  Uncounted& operator=(const Uncounted&) = delete;

  static bool IsInside();
  static void RestOfThisThread();
};

// The other way round, for a call into what is tested from a thread of the test's.
class Counted {
 public:
  Counted();
  ~Counted();
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

 private:
  const int depthAround;
};

}  // namespace fakes

#endif
