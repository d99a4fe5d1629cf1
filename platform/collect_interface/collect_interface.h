/// @file
/// The telemetry and instance collector. Every operation may be called from any thread and may call back into the SDK.
#ifndef SDK_COLLECT_INTERFACE_COLLECT_INTERFACE_H
#define SDK_COLLECT_INTERFACE_COLLECT_INTERFACE_H

#include <memory>

#include "collect_interface/export.h"
#include "pass_interface/message_collect.h"

/// The telemetry and instance collector.
namespace collect_interface {

/// The collector of the process. No operation may keep a connection waiting: it is called on the way of every one.
class ICollectInterface {
 public:
  /// The one of the process; may be empty except in SetSdkType and while the library is loaded, which calls it under
  /// the loader's lock.
  /// flag is always false.
  SDK_COLLECT_INTERFACE_API static std::shared_ptr<ICollectInterface> GetCollectInstance(bool flag);
  /// Reports a crash; text is what the crash handler passes on.
  SDK_COLLECT_INTERFACE_API static void CoreHappen(const char* text);

  /// Names the SDK to which rows and messages belong from now on.
  virtual void SetCollectSdkType(const char* sdkType) = 0;
  /// -1 on failure.
  virtual int DeleteInstanceInfo(int rowId) = 0;
  /// Fills *rowId, which is above 0 on success. -1 on failure.
  virtual int InsertInstanceInfo(int* rowId, const char* targetId, const char* sessionId, int defaultMode,
                                 const char* channel) = 0;
  /// length: of sessionId in bytes. -1 on failure.
  virtual int UpdataInstanceSessionId(int rowId, const char* sessionId, int length) = 0;
  /// Takes a status message, which belongs to the collector from then on. Nothing is told about its success.
  virtual void ReportMessageCollect(std::shared_ptr<pass_interface::MessageCollect> message) = 0;

  virtual ~ICollectInterface() = default;
};

}  // namespace collect_interface

#endif
