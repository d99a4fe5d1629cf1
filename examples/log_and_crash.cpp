// Setting up the log and the crash handler: log_and_crash DIRECTORY [crash]
// With "crash" it crashes on purpose; a dump then lies in the directory.
#include <qv_data_interface/qv_data_interface.h>

#include <cstdio>
#include <cstring>

using namespace qv_data_interface;

// A text that does not fit is refused, not cut.
template <std::size_t size>
static bool Copy(const char* text, char (&field)[size]) {
  if (std::strlen(text) >= size) return false;
  std::strcpy(field, text);
  return true;
}

int main(int argc, char** argv) {
  if (argc < 2) return std::puts("usage: log_and_crash DIRECTORY [crash]"), 2;
  QvLogParam log;
  log.level = 0;  // trace: everything
  log.sizeSetting = 512;
  log.countSetting = 3;
  if (!Copy(argv[1], log.path) || !Copy("EXAMPLE", log.name)) return std::puts("the path is too long"), 2;

  // Before anything else of the library, so that nothing is logged elsewhere and no crash is missed.
  IQVDataInterface::SetLogParam(&log);
  const auto phone = IQVDataInterface::Create();  // writes the version line

  if (argc > 2 && std::strcmp(argv[2], "crash") == 0) {
    std::puts("crashing");
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
  }
  std::printf("the log is in %s\n", argv[1]);
  return 0;
}
