// What qv_cloud prints when it starts, read back from the file that its output went to.
//
// Threads: no shared state. Texts are copies.
#ifndef TOOLS_QV_CONNECT_CLOUD_FILE_H
#define TOOLS_QV_CONNECT_CLOUD_FILE_H

#include <chrono>
#include <filesystem>
#include <istream>
#include <string>

namespace qv_connect {

struct CloudFile {
  std::string baseUrl;
  std::string caFile;
  bool ready = false;  // the cloud has said that it listens
};

// Lines "base-url URL", "ca-file PATH" and "ready"; other lines are ignored.
CloudFile ParseCloudFile(std::istream& text);

// Reads the file until the cloud is ready, as it may have been started only just now. Returns with ready unset when
// that does not come within the time, or on Ctrl-C.
CloudFile AwaitCloudFile(const std::filesystem::path& file, std::chrono::milliseconds timeout);

}  // namespace qv_connect

#endif
