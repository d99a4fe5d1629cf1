// What the connections of one cloud share: its options, the switches for faults, the statistics, the sessions, the
// lines.
//
// Threads: said for each. Ownership: State belongs to the Cloud and outlives every connection.
#ifndef QV_CLOUD_STATE_H
#define QV_CLOUD_STATE_H

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

#include "tools/qv_cloud/cloud.h"
#include "tools/qv_cloud/sessions.h"

namespace qv_cloud {

// The faults, and which of those that happen once are still to come. Any thread.
class Switches {
 public:
  explicit Switches(const Faults& faults) : faults(faults) {}

  void Set(const Faults& newFaults);
  Faults Get() const;
  // Whether an error is still to be reported; Take says true to one caller.
  bool IsErrorArmed() const;
  bool TakeError();
  bool TakeDrop();

 private:
  mutable std::mutex mutex;
  Faults faults;
  bool errorTaken = false;
  bool dropTaken = false;
};

// The statistics and the telling of events. Any thread.
class Observation {
 public:
  explicit Observation(std::function<void(const std::string&)> onEvent) : onEvent(std::move(onEvent)) {}

  // REQUIRES: the change calls nothing of this object.
  void Change(const std::function<void(CloudStats&)>& change);
  CloudStats Get() const;
  bool WaitUntil(const std::function<bool(const CloudStats&)>& condition, std::chrono::milliseconds timeout) const;

  void Event(const std::string& line) const {
    if (onEvent) onEvent(line);
  }

 private:
  const std::function<void(const std::string&)> onEvent;
  mutable std::mutex mutex;
  mutable std::condition_variable changed;
  CloudStats stats;
};

struct Line {
  std::uint32_t ispCode = 0;
  const char* label = "";
  std::uint16_t port = 0;
};

enum class Service { http, signalling };
enum class Fault { none, close, silent, garbage };

struct State {
  // What goes wrong with a connection that has reached the step; counts it as met.
  Fault FaultAt(Service service, Step step);

  explicit State(const CloudOptions& options)
      : options(options),
        switches(options.faults),
        observation(options.onEvent),
        sessions(options.sessionValidity, options.sessionPrefix) {}

  const CloudOptions options;
  Switches switches;
  Observation observation;
  // The cloud's thread only:
  Sessions sessions;
  std::uint64_t decisions = 0;
  std::array<Line, 3> lines{Line{kDefaultLine, "Default"}, Line{kLineA, "Line A"},
                            Line{kLineB, "Line B"}};  // constant once the cloud listens
};

}  // namespace qv_cloud

#endif
