// Posts connections to an OpenTelemetry collector, and keeps none of them waiting: Submit puts a copy into a bounded
// queue. A thread takes up to kMaxBatch of them at a time, retries what may pass (no answer, status 429, 502, 503, 504)
// with growing pauses, and ends when the queue is empty. What cannot be delivered is dropped and counted; a log line
// tells of it, one a minute at most.
//
// Threads: Submit and Stop from any thread; neither waits for the network. A host that waits for the services' threads
// (WaitForServiceThreads) has the thread end within its patience, or TraceBounds::flush when that is shorter: what is
// left is tried once more, then dropped.
// Ownership: the thread owns what it works on together with this object, so this object may die at any time.
#ifndef REFERENCE_COLLECT_INTERFACE_TRACE_EXPORTER_H
#define REFERENCE_COLLECT_INTERFACE_TRACE_EXPORTER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "reference/collect_interface/connection_trace.h"

namespace collect_interface {

inline constexpr std::size_t kMaxQueued = 64;
inline constexpr std::size_t kMaxBatch = 16;

struct TraceBounds {
  std::uint32_t connectTimeOutMs = 3000;
  std::uint32_t requestTimeOutMs = 10000;
  int attempts = 5;
  // Doubled with each attempt, and up to half of it off by chance, so that many hosts do not come back at once.
  std::chrono::milliseconds firstPause{1000};
  // A collector that asks for a longer one costs the batch.
  std::chrono::milliseconds longestPause{30000};
  std::chrono::milliseconds flush{2000};
};

class TraceExporter {
 public:
  explicit TraceExporter(const TraceBounds& bounds = {});
  ~TraceExporter();
  TraceExporter(const TraceExporter&) = delete;
  TraceExporter& operator=(const TraceExporter&) = delete;

  void Submit(ConnectionTrace trace) noexcept;
  // Lets a running thread end soon. A later Submit starts another.
  void Stop();
  // Since the beginning.
  std::uint64_t Dropped() const;

 private:
  class Loop;
  const std::shared_ptr<Loop> loop;
};

}  // namespace collect_interface

#endif
