// A sink of the signalling connection that records every notice.
#ifndef TESTS_REFERENCE_WS_INTERFACE_RECORDING_SINK_H
#define TESTS_REFERENCE_WS_INTERFACE_RECORDING_SINK_H

#include "tests/reference/common/notice_record.h"
#include "ws_interface/ws_interface_notic.h"

struct RecordingSink : ws_interface::IWSInterfaceNotic, tests::NoticeRecord {
  std::int32_t formatChoice = 264;

  void OnConnectState(std::uint32_t state) override { Add("state", state); }
  void OnConnectStep(std::int32_t step) override { Add("step", step); }
  std::int32_t OnAuthRsp(std::uint64_t a, std::uint64_t b, std::uint64_t c, const char* formats) override {
    Add("auth", a, b, c, formats);
    return formatChoice;
  }
  void OnPlayRsp(std::uint32_t a, std::uint64_t b, std::uint32_t c, std::uint32_t d, std::uint32_t e, std::uint32_t f,
                 std::uint32_t g, std::uint32_t h, std::uint32_t i, std::uint32_t j) override {
    Add("play", a, b, c, d, e, f, g, h, i, j);
  }
  void OnNotice5() override { Add("notice 5"); }
  void OnNotice6(const char* text) override { Add("notice 6", text); }
  void OnNotice7() override { Add("notice 7"); }
  void OnNotice8() override { Add("notice 8"); }
  void OnNotice9(std::uint64_t a, std::uint64_t b, std::uint64_t c, std::uint32_t d, std::uint32_t e) override {
    Add("notice 9", a, b, c, d, e);
  }
  void OnNotice10() override { Add("notice 10"); }
  void OnVideoParamRsp(std::int32_t result, std::uint64_t value, std::uint16_t frameRate, std::uint32_t bitRate,
                       std::uint16_t width, std::uint16_t height) override {
    Add("notice 11", result, value, frameRate, bitRate, width, height);
  }
  void OnNotice12() override { Add("notice 12"); }
  void OnNotice13(std::uint64_t a, std::uint64_t b, std::uint64_t c, std::uint32_t d) override {
    Add("notice 13", a, b, c, d);
  }
  void OnNotice14() override { Add("notice 14"); }
  void OnErrorCode(std::uint32_t code, const char* text) override { Add("error", code, text); }
  void OnFirstFrame(std::uint64_t a, std::uint64_t b, std::uint64_t c, std::uint32_t d) override {
    Add("frame", a, b, c, d);
  }
  void OnNotice23() override { Add("notice 23"); }
  void OnNotice24() override { Add("notice 24"); }
  void OnNotice25() override { Add("notice 25"); }
};

#endif
