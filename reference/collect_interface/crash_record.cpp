#include "reference/collect_interface/crash_record.h"

#include <atomic>
#include <list>
#include <mutex>
#include <vector>

namespace collect_interface {
namespace {

struct CrashPlace {
  std::filesystem::path directory;
  // The directory and those above it, the topmost first.
  std::vector<std::filesystem::path::string_type> directories;
  std::filesystem::path::string_type file;
};

constinit std::atomic<const CrashPlace*> currentPlace{nullptr};

CrashPlace PlaceFor(const std::filesystem::path& directory) {
  CrashPlace place;
  place.directory = directory;
  // Absolute, because the working directory may be another one by then.
  const std::filesystem::path absolute = std::filesystem::absolute(directory);
  std::filesystem::path part;
  for (const std::filesystem::path& name : absolute) {
    part /= name;
    if (part != absolute.root_path()) place.directories.push_back(part.native());
  }
  place.file = (absolute / "crashes.txt").native();
  return place;
}

}  // namespace

void SetCrashDirectory(const std::filesystem::path& directory) {
  static auto* const mutex = new std::mutex;
  static auto* const places = new std::list<CrashPlace>;
  const std::lock_guard<std::mutex> lock(*mutex);
  if (!places->empty() && places->back().directory == directory) return;
  places->push_back(PlaceFor(directory));
  currentPlace = &places->back();
}

void RecordCrash(const char* text) noexcept {
  const CrashPlace* const place = currentPlace;
  if (place == nullptr || text == nullptr) return;
  for (const auto& directory : place->directories) MakeDirectoryInCrash(directory.c_str());
  AppendLineInCrash(place->file.c_str(), text);
}

}  // namespace collect_interface
