#include "tools/qv_connect/cloud_file.h"

#include <fstream>
#include <thread>

#include "tools/qv_connect/interrupt.h"

namespace qv_connect {

CloudFile ParseCloudFile(std::istream& text) {
  CloudFile cloud;
  std::string line;
  while (std::getline(text, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const std::size_t space = line.find(' ');
    const std::string key = line.substr(0, space);
    const std::string value = space == std::string::npos ? "" : line.substr(space + 1);
    if (key == "base-url") cloud.baseUrl = value;
    if (key == "ca-file") cloud.caFile = value;
    if (key == "ready") cloud.ready = !cloud.baseUrl.empty();
  }
  return cloud;
}

CloudFile AwaitCloudFile(const std::filesystem::path& file, std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  for (;;) {
    std::ifstream text(file);
    CloudFile cloud = ParseCloudFile(text);
    if (cloud.ready || Interrupted() || std::chrono::steady_clock::now() >= deadline) return cloud;
    // Another process writes the file, and standard C++ has no word when a file grows: it is looked at now and then.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

}  // namespace qv_connect
