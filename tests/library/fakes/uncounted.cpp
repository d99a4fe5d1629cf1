#include "tests/library/fakes/uncounted.h"

#include <utility>

namespace fakes {
namespace {

constinit thread_local int depth = 0;

}  // namespace

Uncounted::Uncounted() {
  ++depth;
}

Uncounted::~Uncounted() {
  --depth;
}

bool Uncounted::IsInside() {
  return depth > 0;
}

void Uncounted::RestOfThisThread() {
  ++depth;
}

Counted::Counted() : depthAround(std::exchange(depth, 0)) {}

Counted::~Counted() {
  depth = depthAround;
}

}  // namespace fakes
