#include "bench/data_directory.h"

#include <random>
#include <string>

#include "reference/common/settings.h"

namespace bench {
namespace {

struct Directory {
  Directory() : path(std::filesystem::temp_directory_path() / ("qv_bench-" + std::to_string(std::random_device()()))) {
    std::filesystem::create_directories(path);
    reference::SetDataDirectory(path);
  }
  ~Directory() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  const std::filesystem::path path;
};

}  // namespace

const std::filesystem::path& DataDirectory() {
  static const Directory directory;
  return directory.path;
}

}  // namespace bench
