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
  std::error_code error;
  std::filesystem::path place = file;
  // What a link leads to is replaced, not the link; and nothing but a file, for a device would be gone.
  if (std::filesystem::is_symlink(file, error)) {
    place = std::filesystem::canonical(file, error);
    if (error) return error.message();
  }
  const std::filesystem::file_status status = std::filesystem::status(place, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) return "it is not a regular file";

  std::filesystem::path temporary = place;
  temporary += "." + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) + ".tmp";
  errno = 0;
  std::ofstream stream(temporary, std::ios::binary | std::ios::trunc);
  if (!stream) return LastError();
  stream << text;
  stream.close();
  std::string why;
  if (!stream) {
    why = LastError();
  } else {
    std::filesystem::rename(temporary, place, error);
    if (error) why = error.message();
  }
  if (!why.empty()) std::filesystem::remove(temporary, error);
  return why;
}

}  // namespace qv_connect
