// The program qv_cloud: a Cloud that runs until it is told to end.
#include <CLI/CLI.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <thread>

#include "tools/qv_cloud/choice_option.h"
#include "tools/qv_cloud/cloud.h"
#include "tools/qv_cloud/fault_options.h"

namespace {

using qv_cloud::ServedCertificate;

struct ProgramOptions {
  qv_cloud::CloudOptions cloud;
  std::string authorityFile;
  std::int64_t sessionValidityMs = 3600000;
  std::int64_t delayMs = 0;
  bool verbose = false;
  bool untilStdinCloses = false;
};

const std::map<std::string, ServedCertificate> kCertificates{
    {"valid", ServedCertificate::valid},
    {"expired", ServedCertificate::expired},
    {"not-yet-valid", ServedCertificate::notYetValid},
    {"wrong-host", ServedCertificate::wrongHost},
    {"self-signed", ServedCertificate::selfSigned},
    {"unknown-authority", ServedCertificate::unknownAuthority},
    {"missing-intermediate", ServedCertificate::missingIntermediate},
    {"old-protocol", ServedCertificate::oldProtocol}};

void AddOptions(CLI::App& app, ProgramOptions& options) {
  app.add_flag("--plain", options.cloud.plain, "Serve http and ws instead of https and wss");
  app.add_option("--ca-file", options.authorityFile,
                 "Write the certificate authority (PEM) that clients are to trust to this file; the default is a new "
                 "temporary directory, removed at the end")
      ->type_name("PATH");
  qv_cloud::AddChoice(app, "--certificate", options.cloud.certificate, kCertificates,
                      "Which certificate the HTTP server presents");
  qv_cloud::AddChoice(app, "--line-certificate", options.cloud.lineCertificate, kCertificates,
                      "Which certificate the lines present");
  app.add_option("--session-validity", options.sessionValidityMs, "How long a session is valid")
      ->type_name("MS")
      ->check(CLI::Range(std::int64_t{1}, std::int64_t{1} << 40))
      ->capture_default_str();
  app.add_option("--delay", options.delayMs, "Delay each HTTP answer and each message to the client")
      ->type_name("MS")
      ->check(CLI::Range(0, 600000))
      ->capture_default_str();
  app.add_option("--frame-payload", options.cloud.framePayload, "Payload of each frame")
      ->type_name("BYTES")
      ->check(CLI::Range(std::size_t{0}, qv_cloud::kMaxFramePayload))
      ->capture_default_str();
  app.add_flag("--verbose", options.verbose, "Print a line for each event");
  app.add_flag("--until-stdin-closes", options.untilStdinCloses, "End when standard input closes, too");
  qv_cloud::AddFaultOptions(app, options.cloud.faults);
}

void PrintLine(const std::string& line) {
  std::cout << line + "\n" << std::flush;
}

void PrintFacts(const qv_cloud::Cloud& cloud) {
  PrintLine("base-url " + cloud.BaseUrl());
  if (!cloud.AuthorityFile().empty()) PrintLine("ca-file " + cloud.AuthorityFile().string());
  for (const std::uint32_t line : {qv_cloud::kDefaultLine, qv_cloud::kLineA, qv_cloud::kLineB}) {
    PrintLine("line " + std::to_string(line) + " " + std::to_string(cloud.LinePort(line)));
  }
  PrintLine("ready");
}

void WaitForEnd(bool untilStdinCloses) {
  // Shared with the reading thread, which may stay blocked for ever.
  const auto io = std::make_shared<boost::asio::io_context>();
  boost::asio::signal_set signals(*io, SIGINT, SIGTERM);
  signals.async_wait([io = io.get()](boost::system::error_code, int) { io->stop(); });
  if (untilStdinCloses) {
    std::thread([io] {
      while (std::getc(stdin) != EOF) {
      }
      io->stop();
    }).detach();
  }
  io->run();
}

void Run(ProgramOptions options) {
  options.cloud.authorityFile = options.authorityFile;
  options.cloud.sessionValidity = std::chrono::milliseconds(options.sessionValidityMs);
  options.cloud.delay = std::chrono::milliseconds(options.delayMs);
  if (options.verbose) options.cloud.onEvent = [](const std::string& line) { PrintLine("event " + line); };
  const qv_cloud::Cloud cloud(options.cloud);
  PrintFacts(cloud);
  WaitForEnd(options.untilStdinCloses);
}

int Serve(int argc, char** argv, ProgramOptions& options) {
  CLI::App app("A cloud on the loopback interface, for qv_data_interface to connect to.", "qv_cloud");
  AddOptions(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error);
  }
  Run(options);
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  int status = EXIT_FAILURE;
  bool readsStdin = false;
  try {
    ProgramOptions options;
    status = Serve(argc, argv, options);
    readsStdin = options.untilStdinCloses;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "qv_cloud: %s\n", error.what());
  }
  // Leaving main would close standard input, whose lock a thread that still reads it holds on some systems.
  if (readsStdin) {
    std::fflush(stdout);
    std::_Exit(status);
  }
  return status;
}
