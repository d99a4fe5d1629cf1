#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cstring>

#include "reference/collect_interface/crash_record.h"

namespace collect_interface {

void MakeDirectoryInCrash(const PathCharacter* directory) noexcept {
  ::mkdir(directory, 0777);
}

void AppendLineInCrash(const PathCharacter* file, const char* text) noexcept {
  const int descriptor = ::open(file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (descriptor < 0) return;
  // One write, so that lines of two processes do not mix.
  char end = '\n';
  const iovec line[] = {{const_cast<char*>(text), std::strlen(text)}, {&end, 1}};
  // A crash handler has nobody to report a failure to.
  [[maybe_unused]] const ssize_t written = ::writev(descriptor, line, 2);
  ::close(descriptor);
}

}  // namespace collect_interface
