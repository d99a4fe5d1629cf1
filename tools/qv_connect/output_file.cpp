#include "tools/qv_connect/output_file.h"

#include <cerrno>
#include <chrono>
#include <fstream>
#include <system_error>

namespace qv_connect {
namespace {

std::string LastError() {
  return errno != 0 ? std::generic_category().message(errno) : "the file could not be written";
}

}  // namespace

std::string WriteFile(const std::filesystem::path& file, const std::string& text) {
  std::filesystem::path temporary = file;
  temporary += "." + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) + ".tmp";
  std::error_code error;
  errno = 0;
  std::ofstream stream(temporary, std::ios::binary | std::ios::trunc);
  if (!stream) return LastError();
  stream << text;
  stream.close();
  std::string why;
  if (!stream) {
    why = LastError();
  } else {
    std::filesystem::rename(temporary, file, error);
    if (error) why = error.message();
  }
  if (!why.empty()) std::filesystem::remove(temporary, error);
  return why;
}

}  // namespace qv_connect
