// The least that connects: minimal BASE_URL
// Against qv_cloud, set QV_REFERENCE_CA_FILE to the ca-file that it prints.
#include <qv_data_interface/qv_data_interface.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>

using namespace qv_data_interface;

class FrontEnd : public IQVDataInterfaceNotic {
 public:
  // Notices come on the services' threads: note what happened, and wake the thread that waits for it.
  void OnStatus(std::int32_t code, const char* message) override { std::printf("%d %s\n", code, message); }
  std::int32_t OnChooseVideoFormat(const std::int32_t* formats, std::uint64_t) override { return formats[0]; }
  void OnFirstFrame(std::uint64_t, std::uint64_t, std::uint64_t, std::uint32_t) override {
    std::lock_guard<std::mutex> lock(mutex);
    firstFrameCame = true;
    changed.notify_one();
  }

  bool AwaitFirstFrame() {
    std::unique_lock<std::mutex> lock(mutex);
    return changed.wait_for(lock, std::chrono::seconds(10), [this] { return firstFrameCame; });
  }

 private:
  std::mutex mutex;
  std::condition_variable changed;
  bool firstFrameCame = false;
};

int main(int argc, char** argv) {
  if (argc != 2) return std::puts("usage: minimal BASE_URL"), 2;
  const auto frontEnd = std::make_shared<FrontEnd>();
  const auto phone = IQVDataInterface::Create();
  const QvVideoParam video;
  const QvDataSystemParam system;
  if (phone->Init("user", "device", "token", "phone-1", 0, frontEnd, &video, &system, 1, argv[1]) != 0) return 1;
  if (phone->GetPhoneConnect() != 0) return 1;
  const bool connected = frontEnd->AwaitFirstFrame();
  std::puts(connected ? "first frame" : "no first frame within 10 s");
  phone->ReleasePhoneConnect();
  return connected ? 0 : 1;
}
