#include "tools/qv_cloud/fault_options.h"

#include <map>
#include <string>

#include "tools/qv_cloud/choice_option.h"

namespace qv_cloud {
namespace {

const std::map<std::string, HttpAnswer> kHttpAnswers{{"normal", HttpAnswer::normal},
                                                     {"garbage", HttpAnswer::garbage},
                                                     {"never", HttpAnswer::never},
                                                     {"closed", HttpAnswer::closed},
                                                     {"half", HttpAnswer::half}};
const std::map<std::string, Step> kHttpSteps{{"accept", Step::accept}, {"hello", Step::hello}, {"tls", Step::tls}};
const std::map<std::string, Step> kSteps{{"accept", Step::accept},         {"hello", Step::hello}, {"tls", Step::tls},
                                         {"upgrade", Step::upgrade},       {"auth", Step::auth},   {"play", Step::play},
                                         {"first-frame", Step::firstFrame}};

}  // namespace

void AddFaultOptions(CLI::App& app, Faults& faults) {
  const char* const kGroup = "What goes wrong";
  const auto number = [&](const char* name, auto& target, const char* unit, const char* help) {
    return app.add_option(name, target, help)->group(kGroup)->type_name(unit);
  };
  const auto choice = [&](const char* name, auto& target, const auto& names, const char* help) {
    AddChoice(app, name, target, names, help)->group(kGroup);
  };
  const auto flag = [&](const char* name, bool& target, const char* help) {
    app.add_flag(name, target, help)->group(kGroup);
  };

  number("--refuse-connect", faults.refuseConnect, "CODE", "Refuse phone-connect with this code");
  number("--refuse-refresh", faults.refuseRefresh, "CODE", "Refuse refresh-session with this code");
  number("--http-status", faults.httpStatus, "STATUS", "Answer HTTP requests with this status")
      ->check(CLI::Range(200, 599));
  choice("--http-answer", faults.httpAnswer, kHttpAnswers,
         "Answer HTTP requests with a garbage body, never, by closing the connection, or with half an answer");
  number("--http-late", faults.httpLateMs, "MS", "Answer HTTP requests so much later");

  choice("--http-close-at", faults.httpCloseAt, kHttpSteps, "Drop an HTTP connection that has reached this step");
  choice("--http-silent-at", faults.httpSilentAt, kHttpSteps, "Say nothing more at this step");
  choice("--http-garbage-at", faults.httpGarbageAt, kHttpSteps, "Send garbage at this step");

  choice("--close-at", faults.closeAt, kSteps, "Drop a signalling connection that has reached this step");
  choice("--silent-at", faults.silentAt, kSteps, "Say nothing more at this step; at auth or play, do not answer");
  choice("--garbage-at", faults.garbageAt, kSteps,
         "Send garbage at this step; malformed JSON instead of the answer to auth, or after the answer to play");
  number("--silent-ms", faults.silentMs, "MS", "End a silence at accept, tls, auth or play after so long");
  flag("--stop-reading", faults.stopReading, "Read nothing more from a client that plays");

  number("--error", faults.errorCode, "CODE", "Report this error to a connection, once (60103013: session expired)");
  number("--error-after-ms", faults.errorAfterMs, "MS", "Report the error so long after play");
  number("--error-after-frames", faults.errorAfterFrames, "COUNT", "Report the error after so many frames instead");
  number("--drop-after-frames", faults.dropAfterFrames, "COUNT", "Drop a connection after so many frames, once");
  flag("--expire-sessions", faults.expireSessions, "Let a session authenticate only once");
}

}  // namespace qv_cloud
