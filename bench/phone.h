// A controller with the front end that drives it, for every benchmark.
//
// Threads: one thread uses it; the notices come on the services' threads. Ownership: the controller is released with
// it.
#ifndef BENCH_PHONE_H
#define BENCH_PHONE_H

#include <condition_variable>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>

#include "bench/services.h"
#include "control/data_control.h"
#include "pass_interface/instance_info.h"

namespace bench {

// A granted session with three carrier lines.
pass_interface::InstanceInfo GrantedSession();

class FrontEnd final : public qv_data_interface::IQVDataInterfaceNotic {
 public:
  void OnStatus(std::int32_t code, const char* message) override;
  std::int32_t OnChooseVideoFormat(const std::int32_t* formats, std::uint64_t count) override;
  void OnFirstFrame(std::uint64_t, std::uint64_t, std::uint64_t, std::uint32_t) override;
  std::int32_t OnNotice8(const char* text) override;
  void OnIspList(const qv_data_interface::IspItem* items, std::uint64_t count) override;

  // The moment of the next first frame. Throws std::runtime_error when it does not come.
  Clock::time_point AwaitFirstFrame();
  // The same for the answer to the command that the cloud echoes.
  void AwaitEcho();
  // Counts the processor's time of the thread that brought the first frame.
  clockid_t ClockOfNoticeThread() const { return noticeThread; }

  // When the last list of lines was handed over; what the library does with a granted session then is saving it.
  Clock::time_point lastIspList;

 private:
  std::mutex mutex;
  std::condition_variable changed;
  void Await(bool& come, const char* what);

  bool hasFrame = false;
  bool hasEcho = false;
  clockid_t noticeThread{};
  Clock::time_point firstFrame;
  std::string lastFailure;
};

class Phone {
 public:
  // Without arguments: one for the silent services, whose sessions no cloud knows.
  explicit Phone(std::string baseUrl = "https://localhost:9", std::string target = "silent phone");
  ~Phone();
  Phone(const Phone&) = delete;
  Phone& operator=(const Phone&) = delete;

  // The longest time-outs that are allowed, from the next Init on.
  void BePatient();

  // Each throws std::runtime_error when the library refuses.
  void Init();
  void GetPhoneConnect();
  void Release() { controller->ReleasePhoneConnect(); }
  // With the silent services: what a granted answer brings, then a connect that finds the session in the cache.
  void ConnectSilently();

  // Init, GetPhoneConnect and the wait for the first frame.
  void ConnectToFirstFrame();

  // As the HTTP service would.
  void Grant(const std::shared_ptr<pass_interface::InstanceInfo>& session);

  const std::shared_ptr<FrontEnd> frontEnd = std::make_shared<FrontEnd>();
  const std::shared_ptr<qv_data_interface::CQVDataControl> controller =
      std::make_shared<qv_data_interface::CQVDataControl>(false);

 private:
  const std::string baseUrl;
  const std::string target;
  qv_data_interface::QvDataSystemParam system;
};

}  // namespace bench

#endif
