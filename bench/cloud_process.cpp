#include "bench/cloud_process.h"

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "bench/data_directory.h"

namespace bench {
namespace {

constexpr std::chrono::seconds kPatience{20};

}  // namespace

CloudProcess::CloudProcess(int delayMs) {
  const std::filesystem::path output = DataDirectory() / ("cloud-" + std::to_string(delayMs) + ".txt");
  const std::string command = "exec '" QV_CLOUD_PROGRAM "' --until-stdin-closes --delay " + std::to_string(delayMs) +
                              " > '" + output.string() + "'";
  input.reset(popen(command.c_str(), "we"));
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (input && std::chrono::steady_clock::now() < deadline) {
    std::ifstream text(output);
    for (std::string key, value; text >> key && key != "ready" && std::getline(text >> std::ws, value);) {
      if (key == "base-url") baseUrl = value;
      if (key == "ca-file") authorityFile = value;
      if (key == "line" && value.starts_with("2 ")) return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  throw std::runtime_error("the cloud does not start: " + command);
}

void CloudProcess::Close::operator()(std::FILE* stream) const {
  pclose(stream);
}

}  // namespace bench
