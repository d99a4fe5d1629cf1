// A front end that waits for its connection's first frame, and takes no memory for it.
//
// Threads: notices from any; one waits. Ownership: nothing but itself.
#ifndef TESTS_ALLOCATION_LISTENER_H
#define TESTS_ALLOCATION_LISTENER_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

#include "qv_data_interface/notice.h"
#include "qv_data_interface/result_codes.h"

namespace allocation {

class Listener final : public qv_data_interface::IQVDataInterfaceNotic {
 public:
  void OnStatus(std::int32_t code, const char*) override {
    // An attempt, its end and its loss are followed by the next one.
    if (code != qv_data_interface::kResultSuccess && code != qv_data_interface::kResultWsConnecting &&
        code != qv_data_interface::kResultWsDisconnect) {
      Note(true);
    }
  }
  std::int32_t OnChooseVideoFormat(const std::int32_t*, std::uint64_t) override { return 264; }
  void OnFirstFrame(std::uint64_t, std::uint64_t, std::uint64_t, std::uint32_t) override { Note(false); }

  // Waits for a first frame or the notice of a failure, in vain ones excepted: isExcused is asked every now and then.
  // False when neither came.
  bool WaitForNews(std::chrono::seconds patience, const std::function<bool()>& isExcused = {}) {
    const auto end = std::chrono::steady_clock::now() + patience;
    std::unique_lock<std::mutex> lock(mutex);
    const auto hasCome = [this] { return hasNews; };
    while (!grown.wait_for(lock, std::chrono::milliseconds(20), hasCome)) {
      if (isExcused && isExcused()) break;
      if (std::chrono::steady_clock::now() > end) return false;
    }
    hasNews = false;
    return true;
  }

  bool HasFailed() {
    const std::lock_guard<std::mutex> lock(mutex);
    return hasFailed;
  }

 private:
  void Note(bool isFailure) {
    const std::lock_guard<std::mutex> lock(mutex);
    hasNews = true;
    hasFailed = hasFailed || isFailure;
    grown.notify_all();
  }

  std::mutex mutex;
  std::condition_variable grown;
  bool hasNews = false;
  bool hasFailed = false;
};

}  // namespace allocation

#endif
