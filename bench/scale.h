// How the library grows with the number of controllers in one process.
#ifndef BENCH_SCALE_H
#define BENCH_SCALE_H

#include <ostream>

namespace bench {

// Measures with 1, 10, 100 and 1,000 controllers (quick: 1 and 10), which all connect at once, and prints the table.
void PrintScale(bool quick, std::ostream& out);

}  // namespace bench

#endif
