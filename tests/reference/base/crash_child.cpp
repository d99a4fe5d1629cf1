// Crashes in the way that it is asked for: crash_child DIRECTORY WAY. The callback leaves the dump's path in
// DIRECTORY/callback.txt.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "base/mini_jump.h"

namespace {

#ifdef __GNUC__
__attribute__((no_sanitize("undefined")))
#endif
void WriteToNowhere() {
  volatile int* volatile nowhere = nullptr;
  *nowhere = 1;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 3) return EXIT_FAILURE;
  const std::filesystem::path directory = arguments[1];
  const std::string way = arguments[2];
  const auto leavePath = [=](const char* dump) {
    std::ofstream(directory / "callback.txt", std::ios::app) << dump << '\n';
    if (way == "fault in the callback") WriteToNowhere();
  };
  if (way == "after a replacement") {
    base::IMiniJump::GenerateMiniDump((directory / "first").string().c_str(), [](const char*) {});
  }
  base::IMiniJump::GenerateMiniDump((directory / "dumps").string().c_str(), leavePath);
  if (way == "abort") std::abort();
  if (way == "thread") std::thread(WriteToNowhere).join();
  WriteToNowhere();
  return EXIT_SUCCESS;
}
