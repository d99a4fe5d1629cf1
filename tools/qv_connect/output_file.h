// Writes a file whole or not at all.
//
// Threads: no state. Ownership: everything is a value.
#ifndef TOOLS_QV_CONNECT_OUTPUT_FILE_H
#define TOOLS_QV_CONNECT_OUTPUT_FILE_H

#include <filesystem>
#include <string>

namespace qv_connect {

// Under a temporary name beside it that then takes its place, so that nobody reads half of it; of a link, beside what
// it leads to. Only a file is replaced. Returns why it could not be written, and what was there before is left alone;
// empty when it was written.
std::string WriteFile(const std::filesystem::path& file, const std::string& text);

}  // namespace qv_connect

#endif
