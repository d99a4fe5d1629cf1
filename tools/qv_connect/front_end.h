// The notice implementation: turns each notice into an event for the main thread and lets the library's thread go on.
//
// Threads: notices come on the library's threads and only touch the queue. Ownership: shares the queue, so that a
// notice that is still running when the program gives up finds it.
#ifndef TOOLS_QV_CONNECT_FRONT_END_H
#define TOOLS_QV_CONNECT_FRONT_END_H

#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "qv_data_interface/notice.h"
#include "tools/qv_connect/events.h"

namespace qv_connect {

class FrontEnd final : public qv_data_interface::IQVDataInterfaceNotic {
 public:
  // To be made on the thread that will call GetPhoneConnect.
  FrontEnd(std::shared_ptr<EventQueue> events, std::int32_t wantedFormat)
      : events(std::move(events)), wantedFormat(wantedFormat), connectThread(std::this_thread::get_id()) {}

  void OnStatus(std::int32_t code, const char* message) override;
  void OnServiceCode(std::int32_t code, const char* message) override;
  std::int32_t OnChooseVideoFormat(const std::int32_t* formats, std::uint64_t count) override;
  void OnPlayRsp(std::uint32_t value1, std::uint64_t value2, std::uint32_t value3, std::uint32_t value4,
                 std::uint32_t value5, std::uint32_t value6, std::uint32_t value7, std::uint32_t value8,
                 std::uint32_t value9, std::uint32_t value10) override;
  void OnFirstFrame(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3, std::uint32_t value4) override;
  void OnIspList(const qv_data_interface::IspItem* items, std::uint64_t count) override;

  void OnNotice6() override { Relay("notice 6"); }
  void OnNotice7() override { Relay("notice 7"); }
  std::int32_t OnNotice8(const char* text) override;
  void OnNotice9() override { Relay("notice 9"); }
  void OnNotice10() override { Relay("notice 10"); }
  void OnNotice11() override { Relay("notice 11"); }
  void OnNotice12(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3, std::uint32_t value4,
                  std::uint32_t value5) override;
  void OnNotice13() override { Relay("notice 13"); }
  void OnVideoParamRsp(std::int32_t result, std::uint64_t value, std::uint16_t frameRate, std::uint32_t bitRate,
                       std::uint16_t width, std::uint16_t height) override;
  void OnNotice15() override { Relay("notice 15"); }
  void OnNotice16(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3, std::uint32_t value4) override;
  void OnNotice17() override { Relay("notice 17"); }
  void OnNotice19() override { Relay("notice 19"); }

 private:
  void Relay(std::string text) { events->Push(EventKind::kRelay, 0, std::move(text)); }

  const std::shared_ptr<EventQueue> events;
  const std::int32_t wantedFormat;
  const std::thread::id connectThread;
};

}  // namespace qv_connect

#endif
