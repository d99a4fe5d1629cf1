// A front end that records its notices.
#ifndef TESTS_LIBRARY_FAKES_FRONT_END_H
#define TESTS_LIBRARY_FAKES_FRONT_END_H

#include <atomic>
#include <cstdint>
#include <string>

#include "qv_data_interface/notice.h"
#include "tests/library/fakes/recorder.h"

namespace fakes {

struct FrontEnd : qv_data_interface::IQVDataInterfaceNotic {
  using U32 = std::uint32_t;
  using U64 = std::uint64_t;

  std::atomic<std::int32_t> chosenFormat = 264;

  void OnStatus(std::int32_t code, const char* message) override { Record("notice.OnStatus", code, message); }
  void OnServiceCode(std::int32_t code, const char* message) override { Record("notice.OnServiceCode", code, message); }
  std::int32_t OnChooseVideoFormat(const std::int32_t* formats, U64 count) override {
    const Uncounted own;
    std::string list;
    for (U64 i = 0; i < count; ++i) list += (i ? " " : "") + std::to_string(formats[i]);
    Record("notice.OnChooseVideoFormat", list);
    return chosenFormat;
  }
  void OnPlayRsp(U32 a, U64 b, U32 c, U32 d, U32 e, U32 f, U32 g, U32 h, U32 i, U32 j) override {
    Record("notice.OnPlayRsp", a, b, c, d, e, f, g, h, i, j);
  }
  void OnFirstFrame(U64 a, U64 b, U64 c, U32 d) override { Record("notice.OnFirstFrame", a, b, c, d); }
  void OnNotice6() override { Record("notice.OnNotice6"); }
  void OnNotice7() override { Record("notice.OnNotice7"); }
  std::int32_t OnNotice8(const char* text) override {
    Record("notice.OnNotice8", text);
    return -1;
  }
  void OnNotice9() override { Record("notice.OnNotice9"); }
  void OnNotice10() override { Record("notice.OnNotice10"); }
  void OnNotice11() override { Record("notice.OnNotice11"); }
  void OnNotice12(U64 a, U64 b, U64 c, U32 d, U32 e) override { Record("notice.OnNotice12", a, b, c, d, e); }
  void OnNotice13() override { Record("notice.OnNotice13"); }
  void OnVideoParamRsp(std::int32_t a, U64 b, std::uint16_t c, U32 d, std::uint16_t e, std::uint16_t f) override {
    Record("notice.OnVideoParamRsp", a, b, c, d, e, f);
  }
  void OnNotice15() override { Record("notice.OnNotice15"); }
  void OnNotice16(U64 a, U64 b, U64 c, U32 d) override { Record("notice.OnNotice16", a, b, c, d); }
  void OnNotice17() override { Record("notice.OnNotice17"); }
  void OnIspList(const qv_data_interface::IspItem* items, U64 count) override {
    const Uncounted own;
    if (!items) return Record("notice.OnIspList", "null", count);
    std::string list;
    for (U64 i = 0; i < count; ++i) list += std::to_string(items[i].ispCode) + "=" + items[i].label + ";";
    Record("notice.OnIspList", list, count);
  }
  void OnNotice19() override { Record("notice.OnNotice19"); }
};

}  // namespace fakes

#endif
