// One connection from init to release, as the command line asks for it.
//
// Threads: everything runs on the thread that made the object; the library's threads reach it through the event queue.
// Ownership: owns the library's object; options and console belong to the caller and outlive it.
#ifndef TOOLS_QV_CONNECT_CONNECTION_H
#define TOOLS_QV_CONNECT_CONNECTION_H

#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "qv_data_interface/data_interface.h"
#include "tools/qv_connect/commands.h"
#include "tools/qv_connect/console.h"
#include "tools/qv_connect/events.h"
#include "tools/qv_connect/exit_codes.h"
#include "tools/qv_connect/options.h"

namespace qv_connect {

struct Outcome {
  ExitCode exitCode = kExitSuccess;
  std::string step;     // where it ended; empty on success and when interrupted at work
  std::string message;  // why; empty on success
};

class Connection {
 public:
  Connection(const Options& options, Console& console);

  // Connects, hands over the commands and releases. Call it once.
  Outcome Run();

  bool SessionFromCache() const { return sessionFromCache; }
  std::optional<std::int64_t> FirstFrameMs() const { return firstFrameMs; }

 private:
  // In the order of a connection.
  enum class Step { kInit, kPhoneConnect, kConnect, kAuthentication, kPlay, kFirstFrame };

  static const char* NameOf(Step step);
  static ExitCode ExitCodeOf(Step step);

  Outcome Connect();
  Outcome Work();
  void ExecuteInput();
  void Release();

  // Waits for a first frame, a status that ends the attempt, the deadline or Ctrl-C.
  Outcome AwaitFirstFrame(Clock::time_point deadline);
  // Shows what comes until the deadline, which may have passed, or Ctrl-C.
  void ShowEventsUntil(Clock::time_point deadline);
  std::optional<Event> NextEvent(Clock::time_point deadline);
  void Take(const Event& event);
  void TakeStatus(const Event& event);

  void Execute(const std::string& line);
  void Call(const std::string& line, const ParsedCommand& command);
  void ChangeLine(const std::string& line, const ParsedCommand& command);
  void CommandFailed(const std::string& line, const std::string& reason);
  Outcome CommandOutcome() const;
  std::string SeeLog() const;
  Outcome Failed(std::string message) const;
  Outcome WasInterrupted() const;

  const Options& options;
  Console& console;
  const std::shared_ptr<EventQueue> events = std::make_shared<EventQueue>();
  std::shared_ptr<qv_data_interface::IQVDataInterface> library;

  Step step = Step::kInit;
  std::string lastStatus;
  std::string refusal;  // set by a status that ends the attempt
  bool firstFrameCame = false;
  bool sessionFromCache = false;
  std::optional<std::int64_t> firstFrameMs;
  std::uint32_t currentLine;
  std::deque<std::string> input;
  bool inputEnded = false;
  bool releaseAsked = false;
  bool working = false;  // the first frame has come
  std::string firstFailedCommand;
};

}  // namespace qv_connect

#endif
