#include "tools/qv_connect/options.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>

#include "tools/qv_connect/cloud_file.h"
#include "tools/qv_connect/commands.h"
#include "tools/qv_connect/exit_codes.h"
#include "tools/qv_connect/host_system.h"

namespace qv_connect {
namespace {

// What the records of the library do not hold as they stand.
struct RawOptions {
  std::uint32_t keepAliveMs = 3000;
  bool noTls = false;
  std::string logDir;
};

CLI::Validator NotEmpty() {
  return {[](std::string& text) { return text.empty() ? std::string("must not be empty") : std::string(); }, "TEXT"};
}

CLI::Validator KnownCommand() {
  return {[](std::string& text) { return ParseCommand(text).error; }, "COMMAND"};
}

CLI::Validator KeepAlive() {
  return {[](std::string& text) -> std::string {
            std::uint32_t value = 0;
            const bool isNumber = CLI::detail::lexical_cast(text, value);
            if (isNumber && (value == 0 || (value >= 1000 && value <= 60000))) return {};
            return "must be 0 (off) or 1000 to 60000, not " + text;
          },
          "0 | 1000-60000"};
}

void AddCloud(CLI::App& app, Options& options) {
  const char* group = "Cloud";
  app.add_option("--cloud-file", options.cloudFile, "what qv_cloud printed; gives --base-url and --ca-file")
      ->capture_default_str()
      ->group(group);
  app.add_option("--base-url", options.baseUrl, "address of the cloud's HTTP service, instead of the cloud file's")
      ->group(group);
  app.add_option("--ca-file", options.caFile, "PEM file of the authorities to trust, instead of the cloud file's")
      ->check(CLI::ExistingFile)
      ->group(group);
  app.add_option("--proxy", options.proxy, "http://host:port of an HTTP proxy")->group(group);
  app.add_option("--data-dir", options.dataDir, "where the session cache and the collector keep their files")
      ->envname("QV_REFERENCE_DATA_DIR")
      ->default_val(UserDataDirectory().string())
      ->group(group);
}

void AddIdentity(CLI::App& app, Options& options) {
  const char* group = "Identity";
  app.add_option("--credential1", options.credential1)->check(NotEmpty())->capture_default_str()->group(group);
  app.add_option("--credential2", options.credential2)->check(NotEmpty())->capture_default_str()->group(group);
  app.add_option("--credential3", options.credential3)->check(NotEmpty())->capture_default_str()->group(group);
  app.add_option("--target", options.target, "the phone")->check(NotEmpty())->capture_default_str()->group(group);
  app.add_option("--mode", options.mode, "handed to the services")->capture_default_str()->group(group);
  app.add_option("--reconnect-number", options.reconnectNumber, "handed to the phone each time the connection stands")
      ->capture_default_str()
      ->group(group);
}

void AddVideo(CLI::App& app, Options& options) {
  const char* group = "Video";
  app.add_option("--format", options.video.videoFormat, "264 (H.264) or 265 (H.265)")
      ->check(CLI::IsMember({264, 265}))
      ->capture_default_str()
      ->group(group);
  app.add_option("--width", options.video.width)->check(CLI::Range(100, 4096))->capture_default_str()->group(group);
  app.add_option("--height", options.video.height)->check(CLI::Range(100, 4096))->capture_default_str()->group(group);
  app.add_option("--frame-rate", options.video.frameRate, "frames a second")
      ->check(CLI::Range(0, 60))
      ->capture_default_str()
      ->group(group);
  app.add_option("--bit-rate", options.video.bitRate)->capture_default_str()->group(group);
}

void AddTimes(CLI::App& app, Options& options, RawOptions& raw) {
  const char* group = "Time limits (ms) and transport";
  app.add_option("--timeout", options.timeoutMs, "from the start to the first frame; again for each change of line")
      ->check(CLI::Range(1, 600000))
      ->capture_default_str()
      ->group(group);
  app.add_option("--http-connect-timeout", options.system.httpValue1)
      ->check(CLI::Range(1000, 30000))
      ->capture_default_str()
      ->group(group);
  app.add_option("--http-timeout", options.system.httpValue2, "of the whole request")
      ->check(CLI::Range(1000, 60000))
      ->capture_default_str()
      ->group(group);
  app.add_option("--ws-connect-timeout", options.system.wsManagerValue)
      ->check(CLI::Range(1000, 30000))
      ->capture_default_str()
      ->group(group);
  app.add_option("--keep-alive", raw.keepAliveMs, "between keep-alive pings; 0 switches them off")
      ->check(KeepAlive())
      ->capture_default_str()
      ->group(group);
  app.add_flag("--no-tls", raw.noTls, "signalling over ws:// instead of wss://")->group(group);
}

void AddWork(CLI::App& app, Options& options) {
  const char* group = "What to do, what to print";
  app.add_option("-c,--command", options.commands, "a command to send after the first frame; may be repeated")
      ->allow_extra_args(false)
      ->check(KnownCommand())
      ->group(group);
  app.add_flag("--no-input", options.noInput, "do not read commands from the standard input")->group(group);
  app.add_option("--duration", options.durationMs, "ms to stay after the last command when no more input comes")
      ->check(CLI::Range(0, 86400000))
      ->capture_default_str()
      ->group(group);
  app.add_flag("--timeline", options.timeline, "draw the milestones of the connection as a waterfall")->group(group);
  app.add_flag("--compare", options.compare, "as --timeline, beside the connection before")->group(group);
  app.add_option("--report", options.reportFile,
                 "write an HTML page: this connection and up to 20 before it, their slowest steps, what went wrong")
      ->type_name("FILE.html")
      ->check(NotEmpty())
      ->group(group);
  app.add_flag("--json", options.json, "print one JSON object; everything else goes to the error output")->group(group);
}

void AddLog(CLI::App& app, Options& options, RawOptions& raw) {
  const char* group = "Log";
  app.add_option("--log-dir", raw.logDir, "directory of the log files (default: log in the data directory)")
      ->group(group);
  app.add_option("--log-level", options.log.level, "lines below it are dropped: 0 trace, 20 information, 60 failure")
      ->capture_default_str()
      ->group(group);
}

// Empty when all is well, otherwise what is wrong.
std::string TakeLogDirectory(const std::string& directory, qv_data_interface::QvLogParam& log) {
  if (directory.size() >= sizeof log.path) {
    return "--log-dir: the path may have up to " + std::to_string(sizeof log.path - 1) + " bytes: " + directory;
  }
  log.path[directory.copy(log.path, sizeof log.path - 1)] = '\0';
  return {};
}

std::string TakeCloudFile(Options& options) {
  if (!options.baseUrl.empty()) return {};
  const CloudFile cloud = AwaitCloudFile(options.cloudFile, options.Timeout());
  if (!cloud.ready) {
    return options.cloudFile + " does not say \"ready\": start a cloud with \"qv_cloud > " + options.cloudFile +
           " &\", or name one with --base-url";
  }
  options.baseUrl = cloud.baseUrl;
  if (options.caFile.empty()) options.caFile = cloud.caFile;
  return {};
}

}  // namespace

std::optional<int> ParseOptions(int argc, const char* const* argv, Options& options) {
  CLI::App app(
      "Connects to a phone in the cloud down to its first video frame, hands it the commands that it reads from\n"
      "the standard input, one a line, and releases.\n\n  qv_cloud > cloud.txt &\n  qv_connect --timeline");
  RawOptions raw;
  AddCloud(app, options);
  AddIdentity(app, options);
  AddVideo(app, options);
  AddTimes(app, options, raw);
  AddWork(app, options);
  AddLog(app, options, raw);
  app.footer("Commands:\n" + CommandHelp() + "\n" + kExitCodeHelp);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kExitSuccess : kExitArguments;
  }
  options.system.useWss = !raw.noTls;
  options.system.wsOptionEnabled = raw.keepAliveMs != 0;
  if (raw.keepAliveMs != 0) options.system.wsOptionInterval = raw.keepAliveMs;
  options.timeline = options.timeline || options.compare;

  if (raw.logDir.empty()) raw.logDir = (std::filesystem::path(options.dataDir) / "log").string();
  std::string wrong = TakeLogDirectory(raw.logDir, options.log);
  if (wrong.empty()) wrong = TakeCloudFile(options);
  if (wrong.empty()) return std::nullopt;
  std::cerr << wrong << "\nRun with --help for more information.\n";
  return kExitArguments;
}

}  // namespace qv_connect
