// Stands in for the collector's library, and counts what the library registers while it is loaded.
// Threads: one at a time.
#ifndef TESTS_BINARY_INTERFACE_RECORDING_COLLECTOR_H
#define TESTS_BINARY_INTERFACE_RECORDING_COLLECTOR_H

#include <string>
#include <vector>

#include "base/compiler.h"

SDK_EXPORT const std::vector<std::string>& RegisteredTypes();

#endif
