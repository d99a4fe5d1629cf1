/// @file
/// The face of the library for an SDK that embeds it and keeps the telemetry in its own hands.
#ifndef QV_DATA_INTERFACE_INTERNAL_DATA_INTERFACE_H
#define QV_DATA_INTERFACE_INTERNAL_DATA_INTERFACE_H

#include <cstdint>
#include <memory>

#include "qv_data_interface/data_interface.h"

namespace qv_data_interface {

/// Like IQVDataInterface, except that an object made here does not report the first frame to the collector by itself:
/// the embedding SDK does, with SendMessageCollect. Every operation may be called from any thread, from inside a notice
/// too.
class QV_DATA_INTERFACE_API IQVInternalDataInterface : public virtual IQVDataInterface {
 public:
  /// A new, independent object; never empty. Throws std::bad_alloc when memory is short.
  static std::shared_ptr<IQVInternalDataInterface> CreateInternalDataInterface();
  /// Names the embedding SDK to the process-wide collector; until then it is "data_interface". May be called before
  /// Create.
  static void SetSdkType(const char* sdkType);

  /// Sends the connection's status, as gathered so far, to the collector. errorCode 0 means no error. Null texts count
  /// as empty. Does nothing before Init or a first SetSdkVersion or RecordMilestone.
  virtual void SendMessageCollect(int collectType, int collectStatus, int errorCode, const char* detail,
                                  const char* extra) = 0;
  /// Stamps the embedding SDK's version into the status. Init sets it to this library's own version, so call it after
  /// Init. Null is ignored.
  virtual void SetSdkVersion(const char* version) = 0;
  /// Notes a moment of the connection: ms since 1970-01-01 UTC. A name that is already there gets the new time. A null
  /// name is ignored.
  virtual void RecordMilestone(const char* name, std::int64_t timeMs) = 0;

  /// See IQVDataInterface.
  ~IQVInternalDataInterface() override;

  /// For those who implement the interface; like the ones below it has no data to copy.
  ///@{
  IQVInternalDataInterface();
  IQVInternalDataInterface(const IQVInternalDataInterface& other);
  IQVInternalDataInterface& operator=(const IQVInternalDataInterface& other);
  ///@}
};

}  // namespace qv_data_interface

#endif
