// What the command line says.
//
// Threads: no shared state. A plain record, owned by main.
#ifndef TOOLS_QV_CONNECT_OPTIONS_H
#define TOOLS_QV_CONNECT_OPTIONS_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "qv_data_interface/parameters.h"

namespace qv_connect {

struct Options {
  std::string cloudFile = "cloud.txt";
  std::string baseUrl;
  std::string caFile;
  std::string proxy;
  std::string dataDir;

  std::string credential1 = "user";
  std::string credential2 = "device";
  std::string credential3 = "token";
  std::string target = "phone-1";
  std::int32_t mode = 0;
  std::int32_t reconnectNumber = 1;

  qv_data_interface::QvVideoParam video;
  qv_data_interface::QvDataSystemParam system;
  qv_data_interface::QvLogParam log;

  std::uint32_t timeoutMs = 10000;
  std::uint32_t durationMs = 0;
  std::vector<std::string> commands;
  bool noInput = false;

  bool timeline = false;
  bool compare = false;
  bool json = false;
  std::string reportFile;  // empty: none

  std::chrono::milliseconds Timeout() const { return std::chrono::milliseconds(timeoutMs); }
};

// Fills options, reading the cloud file where it has to. Returns the exit status when the program is to end at once: a
// wrong argument, of which the error output says what is allowed, or a call for help.
std::optional<int> ParseOptions(int argc, const char* const* argv, Options& options);

}  // namespace qv_connect

#endif
