#include "tools/qv_connect/connection.h"

#include <algorithm>

#include "qv_data_interface/result_codes.h"
#include "tools/qv_connect/front_end.h"
#include "tools/qv_connect/host_system.h"
#include "tools/qv_connect/input.h"
#include "tools/qv_connect/interrupt.h"

namespace qv_connect {
namespace {

// How long Ctrl-C may go unnoticed.
constexpr std::chrono::milliseconds kInterruptCheck{50};

}  // namespace

Connection::Connection(const Options& options, Console& console)
    : options(options), console(console), currentLine(qv_data_interface::kIspCodeDefault) {}

const char* Connection::NameOf(Step step) {
  switch (step) {
    case Step::kInit:
      return "init";
    case Step::kPhoneConnect:
      return "phone-connect";
    case Step::kConnect:
      return "connect";
    case Step::kAuthentication:
      return "authentication";
    case Step::kPlay:
      return "play";
    case Step::kFirstFrame:
      return "first frame";
  }
  return "";
}

ExitCode Connection::ExitCodeOf(Step step) {
  switch (step) {
    case Step::kInit:
      return kExitInit;
    case Step::kPhoneConnect:
      return kExitPhoneConnect;
    case Step::kConnect:
    case Step::kAuthentication:
    case Step::kPlay:
      return kExitWebSocket;
    case Step::kFirstFrame:
      return kExitFirstFrame;
  }
  return kExitInternal;
}

Outcome Connection::Run() {
  Outcome outcome = Connect();
  if (outcome.exitCode == kExitSuccess) outcome = Work();
  Release();
  return outcome;
}

Outcome Connection::Connect() {
  const Clock::time_point deadline = Clock::now() + options.Timeout();
  console.Step("init", "phone " + options.target + " at " + options.baseUrl);
  library = qv_data_interface::IQVDataInterface::Create();
  const auto notice = std::make_shared<FrontEnd>(events, static_cast<std::int32_t>(options.video.videoFormat));
  const std::int32_t result = library->Init(
      options.credential1.c_str(), options.credential2.c_str(), options.credential3.c_str(), options.target.c_str(),
      options.mode, notice, &options.video, &options.system, options.reconnectNumber, options.baseUrl.c_str());
  if (result != 0) return Failed("Init returned " + std::to_string(result) + SeeLog());

  step = Step::kPhoneConnect;
  console.Step("phone-connect", "ask for a session");
  if (library->GetPhoneConnect() != 0) return Failed("GetPhoneConnect returned -1" + SeeLog());
  return AwaitFirstFrame(deadline);
}

Outcome Connection::AwaitFirstFrame(Clock::time_point deadline) {
  firstFrameCame = false;
  refusal.clear();
  while (const std::optional<Event> event = NextEvent(deadline)) {
    Take(*event);
    if (firstFrameCame) return {};
    if (!refusal.empty()) return Failed(refusal);
  }
  if (Interrupted()) return WasInterrupted();
  const std::string after = lastStatus.empty() ? "" : "; the last status was: " + lastStatus;
  return Failed("no first frame within " + std::to_string(options.timeoutMs) + " ms" + after);
}

std::optional<Event> Connection::NextEvent(Clock::time_point deadline) {
  while (!Interrupted()) {
    std::optional<Event> event = events->Wait(std::min(deadline, Clock::now() + kInterruptCheck));
    if (event || Clock::now() >= deadline) return event;
  }
  return std::nullopt;
}

void Connection::ShowEventsUntil(Clock::time_point deadline) {
  while (const std::optional<Event> event = NextEvent(deadline)) {
    Take(*event);
    if (event->at > deadline) return;
  }
}

// The notices of the HTTP service and of the WebSocket library may overtake each other, so that a step never goes back
// except when the connection is lost.
void Connection::Take(const Event& event) {
  switch (event.kind) {
    case EventKind::kStatus:
      return TakeStatus(event);
    case EventKind::kSession:
      sessionFromCache = event.code == 1;
      step = std::max(step, Step::kConnect);
      return console.Step(event.at, "phone-connect", event.text);
    case EventKind::kFormats:
      step = std::max(step, Step::kPlay);
      return console.Step(event.at, "authentication", event.text);
    case EventKind::kPlayAnswer:
      step = std::max(step, Step::kFirstFrame);
      return console.Step(event.at, "play", event.text);
    case EventKind::kFirstFrame:
      firstFrameCame = true;
      if (!firstFrameMs) firstFrameMs = console.SinceStartMs(event.at);
      return console.Step(event.at, "first frame", event.text);
    case EventKind::kRelay:
      return console.Step(event.at, "notice", event.text);
    case EventKind::kInput:
      return input.push_back(event.text);
    case EventKind::kInputEnd:
      inputEnded = true;
      return;
  }
}

void Connection::TakeStatus(const Event& event) {
  using namespace qv_data_interface;
  const std::string text = event.text + " (" + std::to_string(event.code) + ")";
  lastStatus = text;
  switch (event.code) {
    case kResultSuccess:
      return console.Step(event.at, "connect", "the connection stands");
    case kResultWsConnecting:
    case kResultWsDisconnect:
      step = Step::kConnect;
      return console.Step(event.at, "connect", text);
    case kResultWsInitFailed:
      step = Step::kConnect;
      break;
    default:
      // Before the formats a code of the phone's own can only be its answer to the authentication.
      if (step == Step::kConnect) step = Step::kAuthentication;
      break;
  }
  refusal = text;
  console.Step(event.at, NameOf(step), text);
}

Outcome Connection::Work() {
  working = true;
  for (const std::string& line : options.commands) {
    if (releaseAsked || Interrupted()) break;
    Execute(line);
  }
  if (options.commands.empty() && !options.noInput) ExecuteInput();
  if (!releaseAsked) ShowEventsUntil(Clock::now() + std::chrono::milliseconds(options.durationMs));
  return Interrupted() ? WasInterrupted() : CommandOutcome();
}

void Connection::ExecuteInput() {
  if (InputIsTerminal()) console.Text("Type a command; \"help\" lists them, \"release\" ends.\n");
  StartReadingInput(events);
  while (!releaseAsked && !Interrupted()) {
    if (!input.empty()) {
      const std::string line = std::move(input.front());
      input.pop_front();
      Execute(line);
    } else if (inputEnded) {
      return;
    } else if (const std::optional<Event> event = NextEvent(Clock::time_point::max())) {
      Take(*event);
    }
  }
}

void Connection::Execute(const std::string& line) {
  const ParsedCommand command = ParseCommand(line);
  switch (command.kind) {
    case ParsedCommand::Kind::kNothing:
      return;
    case ParsedCommand::Kind::kWrong:
      return CommandFailed(line, command.error);
    case ParsedCommand::Kind::kHelp:
      return console.Text(CommandHelp());
    case ParsedCommand::Kind::kRelease:
      releaseAsked = true;
      return;
    case ParsedCommand::Kind::kLine:
      return ChangeLine(line, command);
    case ParsedCommand::Kind::kCall:
      return Call(line, command);
  }
}

void Connection::Call(const std::string& line, const ParsedCommand& command) {
  const std::int32_t result = command.call(*library);
  if (result == 0) {
    console.Step("command", line + " -> 0");
  } else {
    CommandFailed(line, "returned " + std::to_string(result));
  }
  ShowEventsUntil(Clock::now());
}

// The next command finds the new connection standing: waits for its first frame.
void Connection::ChangeLine(const std::string& line, const ParsedCommand& command) {
  ShowEventsUntil(Clock::now());
  const std::int32_t result = command.call(*library);
  if (result != 0) {
    return CommandFailed(line, "returned " + std::to_string(result) + "; the line must be one of those offered");
  }
  const bool isCurrent = command.ispCode == currentLine;
  console.Step("command", line + (isCurrent ? " -> 0; it is the current line" : " -> 0; the connection is built anew"));
  if (isCurrent) return;
  currentLine = command.ispCode;
  const Outcome outcome = AwaitFirstFrame(Clock::now() + options.Timeout());
  if (outcome.exitCode != kExitSuccess) CommandFailed(line, outcome.step + ": " + outcome.message);
}

void Connection::CommandFailed(const std::string& line, const std::string& reason) {
  console.Step("command", line + " failed: " + reason);
  if (firstFailedCommand.empty()) firstFailedCommand = line + ": " + reason;
}

// A slip of the fingers at a terminal is told at once and is no failure of the program.
Outcome Connection::CommandOutcome() const {
  const bool typed = options.commands.empty() && InputIsTerminal();
  if (firstFailedCommand.empty() || typed) return {};
  return {kExitCommand, "command", firstFailedCommand};
}

std::string Connection::SeeLog() const {
  return "; the log says why, in " + std::string(options.log.path);
}

Outcome Connection::Failed(std::string message) const {
  // It is tried again until shortly before its end, also where a cloud has started anew meanwhile and knows nothing of
  // it.
  if (sessionFromCache && !firstFrameMs) {
    message +=
        "; the session came from the cache, remove session_cache.db from the data directory to ask for a new one";
  }
  return {ExitCodeOf(step), NameOf(step), std::move(message)};
}

Outcome Connection::WasInterrupted() const {
  return {kExitInterrupted, working ? "" : NameOf(step), "interrupted"};
}

void Connection::Release() {
  const Clock::time_point before = Clock::now();
  library->ReleasePhoneConnect();
  library.reset();
  const Clock::time_point after = Clock::now();
  ShowEventsUntil(before);
  const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(after - before);
  console.Step(after, "release", "took " + std::to_string(took.count()) + " ms");
}

}  // namespace qv_connect
