// The directory that this run keeps everything in, the log as well: a new one, removed when the program ends.
#ifndef BENCH_DATA_DIRECTORY_H
#define BENCH_DATA_DIRECTORY_H

#include <filesystem>

namespace bench {

// Made and given to the reference services and the logger at the first call. Throws std::filesystem::filesystem_error.
const std::filesystem::path& DataDirectory();

}  // namespace bench

#endif
