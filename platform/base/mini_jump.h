/// @file
/// Crash dumps.
#ifndef SDK_BASE_MINI_JUMP_H
#define SDK_BASE_MINI_JUMP_H

#include <functional>

#include "base/export.h"

namespace base {

/// The crash handler of the process.
class IMiniJump {
 public:
  /// Installs a crash handler for the whole process that writes a dump file into dumpDirectory and then calls onDump
  /// once, on the crashed thread, with the path of the file. A further call replaces the directory and the callback.
  SDK_BASE_API static void GenerateMiniDump(const char* dumpDirectory, std::function<void(const char*)> onDump);

  virtual ~IMiniJump() = default;
};

}  // namespace base

#endif
