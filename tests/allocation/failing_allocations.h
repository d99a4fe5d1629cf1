// The operators new of the program: they can be told to fail, and they count what has not been freed.
//
// Threads: any; allocations count and fail on every thread that is not inside tests::Uncounted. Ownership: none.
#ifndef TESTS_ALLOCATION_FAILING_ALLOCATIONS_H
#define TESTS_ALLOCATION_FAILING_ALLOCATIONS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <new>

#include "tests/support/uncounted.h"

namespace allocation {

enum class Mode { kOnce, kFromThenOn };

// From now on the allocation of that number fails, counted from 1; or it and all after it.
void Arm(std::uint64_t number, Mode mode);
// Says how many have failed.
std::uint64_t Disarm();
std::uint64_t FailedSoFar();
// Blocks that were counted when they were allocated, and are not freed.
std::int64_t Live();

// A step of a story. What it throws reaches this caller, and is nothing but the lack of memory; says whether it threw.
template <class Name, class Step>
bool Do(const Name& name, Step&& step) {
  try {
    const tests::Counted counted;
    step();
    return false;
  } catch (const std::bad_alloc&) {
    return true;
  } catch (...) {
    ADD_FAILURE() << name << " threw something else than bad_alloc";
    return false;
  }
}

}  // namespace allocation

#endif
