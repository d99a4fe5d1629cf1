// Choosing the video format and the carrier line: video_and_line BASE_URL
// Connects, prefers H.265, moves to the first line that the phone offers, and waits for the picture there.
#include <qv_data_interface/qv_data_interface.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <vector>

using namespace qv_data_interface;

class FrontEnd : public IQVDataInterfaceNotic {
 public:
  void OnStatus(std::int32_t code, const char* message) override { std::printf("%d %s\n", code, message); }

  // Must return an offered format; a 0 would be played as it stands.
  std::int32_t OnChooseVideoFormat(const std::int32_t* formats, std::uint64_t count) override {
    const std::int32_t* const end = formats + count;
    const std::int32_t wanted = QV_VIDEO_FORMAT_H265;
    return std::find(formats, end, wanted) != end ? wanted : formats[0];
  }

  void OnIspList(const IspItem* items, std::uint64_t count) override {
    std::lock_guard<std::mutex> lock(mutex);
    lines.clear();
    linesCame = true;
    for (std::uint64_t i = 0; i < count; ++i) {
      std::printf("line %d: %s\n", items[i].ispCode, items[i].label);  // copy a label to keep it
      lines.push_back(items[i].ispCode);
    }
    changed.notify_one();
  }

  void OnFirstFrame(std::uint64_t, std::uint64_t, std::uint64_t, std::uint32_t format) override {
    std::lock_guard<std::mutex> lock(mutex);
    ++frames;
    std::printf("first frame %d, format %u\n", frames, format);
    changed.notify_one();
  }

  // The lines may come before or after the first frame.
  bool Await(int firstFrames) {
    std::unique_lock<std::mutex> lock(mutex);
    return changed.wait_for(lock, std::chrono::seconds(10), [&] { return frames >= firstFrames && linesCame; });
  }
  std::vector<std::int32_t> Lines() {
    std::lock_guard<std::mutex> lock(mutex);
    return lines;
  }

 private:
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::int32_t> lines;
  bool linesCame = false;
  int frames = 0;
};

int main(int argc, char** argv) {
  if (argc != 2) return std::puts("usage: video_and_line BASE_URL"), 2;
  const auto frontEnd = std::make_shared<FrontEnd>();
  const auto phone = IQVDataInterface::Create();
  QvVideoParam video;
  video.width = 1080;
  video.height = 1920;
  video.frameRate = 60;
  const QvDataSystemParam system;
  if (phone->Init("user", "device", "token", "phone-1", 0, frontEnd, &video, &system, 1, argv[1]) != 0) return 1;
  if (phone->GetPhoneConnect() != 0 || !frontEnd->Await(1)) return 1;

  const auto lines = frontEnd->Lines();
  if (lines.empty() || phone->ChangeIsp(static_cast<std::uint32_t>(lines[0])) != 0) return 1;
  if (!frontEnd->Await(2)) return 1;
  phone->ReleasePhoneConnect();
  return 0;
}
