// Writes a file whole or not at all.
//
// Threads: no state. Ownership: everything is a value.
#ifndef TOOLS_QV_CONNECT_OUTPUT_FILE_H
#define TOOLS_QV_CONNECT_OUTPUT_FILE_H

#include <filesystem>
#include <string>

namespace qv_connect {

// Under a temporary name beside it that then takes its place, so that nobody reads half of it. Returns why it could not
// be written; empty when it was. What was there before is then left alone.
std::string WriteFile(const std::filesystem::path& file, const std::string& text);

}  // namespace qv_connect

#endif
