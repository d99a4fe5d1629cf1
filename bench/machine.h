// The machine that the figures belong to.
#ifndef BENCH_MACHINE_H
#define BENCH_MACHINE_H

#include <string>

namespace bench {

// In one line: processor, cores, memory, system, compiler, and how busy the machine is with other things.
std::string Machine();

}  // namespace bench

#endif
