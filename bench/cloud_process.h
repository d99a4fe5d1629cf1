// A qv_cloud in a process of its own, so that neither its memory nor its time counts as the library's.
//
// Threads: one. Ownership: the destructor ends the process.
#ifndef BENCH_CLOUD_PROCESS_H
#define BENCH_CLOUD_PROCESS_H

#include <cstdio>
#include <memory>
#include <string>

namespace bench {

class CloudProcess {
 public:
  // delayMs: of every answer and message on its way to the client. Throws std::runtime_error when it does not start.
  explicit CloudProcess(int delayMs = 0);

  std::string baseUrl;
  std::string authorityFile;

 private:
  struct Close {
    void operator()(std::FILE* input) const;
  };
  std::unique_ptr<std::FILE, Close> input;
};

}  // namespace bench

#endif
