// An SDK that embeds the library and reports under its own name: internal_sdk BASE_URL
// It stamps its version into the telemetry, notes a milestone of its own and sends the first-frame message itself.
#include <qv_data_interface/qv_data_interface.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>

using namespace qv_data_interface;

static std::int64_t NowMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

class FrontEnd : public IQVDataInterfaceNotic {
 public:
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
  if (argc != 2) return std::puts("usage: internal_sdk BASE_URL"), 2;
  IQVInternalDataInterface::SetSdkType("example_sdk");  // of the whole process, until the next call
  const auto phone = IQVInternalDataInterface::CreateInternalDataInterface();
  const auto frontEnd = std::make_shared<FrontEnd>();
  const QvVideoParam video;
  const QvDataSystemParam system;
  if (phone->Init("user", "device", "token", "phone-1", 0, frontEnd, &video, &system, 1, argv[1]) != 0) return 1;
  phone->SetSdkVersion("4.5.6");  // after Init, which sets the library's own
  phone->RecordMilestone("exampleSdkReady", NowMs());
  if (phone->GetPhoneConnect() != 0 || !frontEnd->AwaitFirstFrame()) return 1;

  // An object made here does not send this one by itself: type 1, status 2 is "first frame".
  phone->SendMessageCollect(1, 2, 0, "shown by example_sdk", "");

  // The 17 commands of IQVDataInterface are there too, and one more behind a cast.
  if (const auto more = std::dynamic_pointer_cast<IQVDataDummyReqInterface>(phone)) {
    std::printf("dummy request: %d\n", more->SendDummyReq());
  }
  phone->ReleasePhoneConnect();
  return 0;
}
