// The collector: keeps instance rows and status messages in a local database, see schema.h, and sends each connection
// as a trace when the host has named an OpenTelemetry collector. Registering an SDK type opens nothing, since that
// happens while the libraries of the process are being loaded.
//
// Threads: every operation from any thread; each ends when its rows are written, in well under a millisecond
// unless another process holds the database: that is waited for 50 ms at most, then the rows are lost. None waits for
// the network: the traces have a thread of their own, see trace_exporter.h.
// Ownership: holds its database until it is destroyed; a message is read during the call only.
#ifndef REFERENCE_COLLECT_INTERFACE_COLLECTOR_H
#define REFERENCE_COLLECT_INTERFACE_COLLECTOR_H

#include <mutex>
#include <string>

#include "collect_interface/collect_interface.h"
#include "reference/collect_interface/connection_trace.h"
#include "reference/collect_interface/trace_exporter.h"
#include "reference/common/sqlite_store.h"

namespace collect_interface {

class Collector final : public ICollectInterface {
 public:
  Collector();

  // Stamped into the rows that are written later.
  void SetCollectSdkType(const char* sdkType) override;
  int DeleteInstanceInfo(int rowId) override;
  int InsertInstanceInfo(int* rowId, const char* targetId, const char* sessionId, int defaultMode,
                         const char* channel) override;
  int UpdataInstanceSessionId(int rowId, const char* sessionId, int length) override;
  void ReportMessageCollect(std::shared_ptr<pass_interface::MessageCollect> message) override;

 private:
  std::string SdkType();
  void Trace(const pass_interface::MessageCollect& message);

  reference::sqlite::Store store;

  std::mutex sdkTypeMutex;
  std::string sdkType;

  std::mutex watchMutex;
  // Guarded by watchMutex.
  ConnectionWatch watch;
  TraceExporter exporter;
};

}  // namespace collect_interface

#endif
