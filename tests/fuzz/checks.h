// What must hold for whatever comes from the disk or the network, one check for each reader. Each ends the process with
// a message when it does not hold.
//
// Threads: one at a time. Ownership: values. The fuzz targets and the flip test share them.
#ifndef TESTS_FUZZ_CHECKS_H
#define TESTS_FUZZ_CHECKS_H

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace fuzz {

inline void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

// Each says whether the input was taken.
bool CheckCacheJson(std::string_view input);
// The input as a row, and as the text that a row is made of.
bool CheckCacheRow(std::string_view input);
bool CheckFormats(std::string_view input);
bool CheckHttpAnswer(std::string_view input);
// The input as a message, as a video frame, as a URL and as a text to send.
bool CheckSignalling(std::string_view input);

}  // namespace fuzz

#endif
