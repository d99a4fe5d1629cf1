#include "bench/data_directory.h"

#include <random>
#include <stdexcept>
#include <string>

#include "qv_data_interface/qv_data_interface.h"
#include "reference/common/settings.h"

namespace bench {
namespace {

struct Directory {
  Directory() : path(std::filesystem::temp_directory_path() / ("qv_bench-" + std::to_string(std::random_device()()))) {
    std::filesystem::create_directories(path);
    reference::SetDataDirectory(path);
    // The log as a host has it when it changes nothing but the place.
    qv_data_interface::QvLogParam log;
    const std::string text = (path / "log").string();
    if (text.size() >= sizeof log.path) throw std::length_error("the temporary directory's name is too long");
    log.path[text.copy(log.path, text.size())] = '\0';
    qv_data_interface::IQVDataInterface::SetLogParam(&log);
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
