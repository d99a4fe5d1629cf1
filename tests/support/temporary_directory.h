// A directory of a test's own, and its files.
#ifndef TESTS_SUPPORT_TEMPORARY_DIRECTORY_H
#define TESTS_SUPPORT_TEMPORARY_DIRECTORY_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <system_error>
#include <vector>

namespace tests {

class TemporaryDirectory {
 public:
  TemporaryDirectory()
      : path(std::filesystem::temp_directory_path() / ("qv-test-" + std::to_string(std::random_device()()))) {
    std::filesystem::create_directories(path);
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::filesystem::path operator/(const std::string& name) const { return path / name; }

  const std::filesystem::path path;
};

inline std::string ReadFile(const std::filesystem::path& file, std::ios::openmode mode = std::ios::binary) {
  std::ifstream stream(file, mode);
  return {std::istreambuf_iterator<char>(stream), {}};
}

inline std::vector<std::string> ReadLines(const std::filesystem::path& file) {
  std::ifstream stream(file);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

inline void WriteFile(const std::filesystem::path& file, const std::string& content) {
  std::ofstream(file, std::ios::binary) << content;
}

}  // namespace tests

#endif
