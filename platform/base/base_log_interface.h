/// @file
/// The process-wide logger of the SDK.
///
/// Threads: every operation may be called from any thread at any time; concurrent WriteLog calls keep their lines
/// whole. Ownership: the logger always exists; callers fetch it for each use and drop the shared pointer straight
/// after. The order of the operations is part of the binary interface; an operation that no SDK library calls keeps its
/// place under a Reserved name.
#ifndef SDK_BASE_BASE_LOG_INTERFACE_H
#define SDK_BASE_BASE_LOG_INTERFACE_H

#include <memory>

#include "base/export.h"

/// The SDK's base library: log, crash dumps, thread ids.
namespace base {

/// The logger of the process.
class IBaseLogInterface {
 public:
  /// Never empty.
  SDK_BASE_API static std::shared_ptr<IBaseLogInterface> GetLogInstance();

  /// Directory of the log files. The text is copied.
  virtual void SetLogPath(const char* directory) = 0;
  /// Name of the log files, without an ending. The text is copied.
  virtual void SetLogName(const char* name) = 0;
  /// How large a file may grow; the unit is the logger's. For the reference logger KiB.
  virtual void SetLogSizeSetting(const int& sizeSetting) = 0;
  /// Lines below this level are dropped by the logger: 0 trace, 20 information, 60 failure.
  virtual void SetLogLevel(const int& threshold) = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved5() = 0;
  /// The logger's own. For the reference logger 0: go on in the last file; 1: begin a new one.
  virtual void SetLogModeSetting(const int& modeSetting) = 0;
  /// How many files are kept.
  virtual void SetLogCountSetting(const int& countSetting) = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved8() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved9() = 0;
  /// Formats and writes one line. Every text argument is NUL-terminated and read during the call only.
  virtual void WriteLog(const int& level, const long& threadId, const char* format, ...) SDK_PRINTF_FORMAT(4, 5) = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved11() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved12() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved13() = 0;
  /// Not used; keeps the places of the others.
  virtual void Reserved14() = 0;
  /// Opens the log with the settings made so far; a further call takes over what was set since.
  virtual void StartLog() = 0;

  virtual ~IBaseLogInterface() = default;
};

}  // namespace base

#endif
