// What the sweep is made of: stories, each a stretch of a connection's life, and the intruders that meet them.
//
// Threads: a story runs on a thread of its own, an intruder there or on another one; neither waits for the other.
// Ownership: tables without state. What a story works on is its fixture's.
#ifndef TESTS_LIBRARY_SWEEP_STORY_H
#define TESTS_LIBRARY_SWEEP_STORY_H

#include <stdexcept>
#include <string_view>
#include <vector>

#include "tests/library/library_test.h"

namespace sweep {

using library_test::LibraryTest;

constexpr std::int32_t kSaysNothing = -2;

struct Story {
  std::string_view name;
  void (*prepare)(LibraryTest& test);
  // The result of the operation, or kSaysNothing.
  std::int32_t (*run)(LibraryTest& test);
  std::int32_t resultAlone;
  int leastCallOuts;
  // Its result is -1 when a release overtakes it.
  bool isOvertaken = false;
};

struct Intruder {
  std::string_view name;
  // The same; -1 also when the front end or the service no longer has what it takes to call.
  std::int32_t (*run)(LibraryTest& test);
  bool releases = false;
};

// What the intruder "failure" makes of the call-out.
struct ServiceFailure : std::runtime_error {
  ServiceFailure() : std::runtime_error("the service fails") {}
};

const std::vector<Story>& Stories();
const std::vector<Intruder>& Intruders();
const Intruder& Failure();

// Every kind of notice and answer, on a controller that has been released.
void NotifyLate(LibraryTest& test);

}  // namespace sweep

#endif
