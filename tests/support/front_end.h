// Front ends whose notices are lines of text. What they do with them, sweeps of allocations do not count.
//
// Threads: notices from any. Ownership: none.
#ifndef TESTS_SUPPORT_FRONT_END_H
#define TESTS_SUPPORT_FRONT_END_H

#include <atomic>
#include <cstdint>
#include <string>

#include "qv_data_interface/notice.h"
#include "tests/support/line.h"
#include "tests/support/notice_record.h"
#include "tests/support/uncounted.h"

namespace tests {

class FrontEnd : public qv_data_interface::IQVDataInterfaceNotic {
 public:
  using U16 = std::uint16_t;
  using I32 = std::int32_t;
  using U32 = std::uint32_t;
  using U64 = std::uint64_t;

  std::atomic<I32> chosenFormat = 264;

  void OnStatus(I32 code, const char* message) override { Tell("OnStatus", code, message); }
  void OnServiceCode(I32 code, const char* message) override { Tell("OnServiceCode", code, message); }
  I32 OnChooseVideoFormat(const I32* formats, U64 count) override {
    const Uncounted own;
    std::string list;
    for (U64 i = 0; i < count; ++i) list += (i ? " " : "") + std::to_string(formats[i]);
    Tell("OnChooseVideoFormat", list);
    return chosenFormat;
  }
  void OnPlayRsp(U32 a, U64 b, U32 c, U32 d, U32 e, U32 f, U32 g, U32 h, U32 i, U32 j) override {
    Tell("OnPlayRsp", a, b, c, d, e, f, g, h, i, j);
  }
  void OnFirstFrame(U64 a, U64 b, U64 c, U32 d) override { Tell("OnFirstFrame", a, b, c, d); }
  void OnNotice6() override { Tell("OnNotice6"); }
  void OnNotice7() override { Tell("OnNotice7"); }
  I32 OnNotice8(const char* text) override {
    Tell("OnNotice8", text);
    return -1;
  }
  void OnNotice9() override { Tell("OnNotice9"); }
  void OnNotice10() override { Tell("OnNotice10"); }
  void OnNotice11() override { Tell("OnNotice11"); }
  void OnNotice12(U64 a, U64 b, U64 c, U32 d, U32 e) override { Tell("OnNotice12", a, b, c, d, e); }
  void OnNotice13() override { Tell("OnNotice13"); }
  void OnVideoParamRsp(I32 a, U64 b, U16 c, U32 d, U16 e, U16 f) override { Tell("OnVideoParamRsp", a, b, c, d, e, f); }
  void OnNotice15() override { Tell("OnNotice15"); }
  void OnNotice16(U64 a, U64 b, U64 c, U32 d) override { Tell("OnNotice16", a, b, c, d); }
  void OnNotice17() override { Tell("OnNotice17"); }
  void OnIspList(const qv_data_interface::IspItem* items, U64 count) override {
    const Uncounted own;
    if (!items) return Tell("OnIspList", "null", count);
    std::string list;
    for (U64 i = 0; i < count; ++i) list += std::to_string(items[i].ispCode) + "=" + items[i].label + ";";
    Tell("OnIspList", list, count);
  }
  void OnNotice19() override { Tell("OnNotice19"); }

 protected:
  virtual void OnLine(const std::string& line) = 0;

 private:
  template <class... Arguments>
  void Tell(const char* notice, const Arguments&... arguments) {
    const Uncounted own;
    OnLine(Line(notice, arguments...));
  }
};

// Keeps its notices, to be waited for.
struct ListeningFrontEnd : FrontEnd {
  NoticeRecord notices;

 protected:
  void OnLine(const std::string& line) override { notices.Add(line); }
};

// How the lines of these notices begin.
inline constexpr char kStands[] = "OnStatus(0,";
inline constexpr char kConnecting[] = "OnStatus(60701003,";
inline constexpr char kDisconnected[] = "OnStatus(60701002,";
inline constexpr char kFirstFrame[] = "OnFirstFrame(";

}  // namespace tests

#endif
