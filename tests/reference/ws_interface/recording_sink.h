// A sink of the signalling connection that records every notice.
#ifndef TESTS_REFERENCE_WS_INTERFACE_RECORDING_SINK_H
#define TESTS_REFERENCE_WS_INTERFACE_RECORDING_SINK_H

#include "tests/support/line.h"
#include "tests/support/notice_record.h"
#include "ws_interface/ws_interface_notic.h"

struct RecordingSink : ws_interface::IWSInterfaceNotic, tests::NoticeRecord {
  using U16 = std::uint16_t;
  using I32 = std::int32_t;
  using U32 = std::uint32_t;
  using U64 = std::uint64_t;

  I32 formatChoice = 264;

  void OnConnectState(U32 state) override { Tell("OnConnectState", state); }
  void OnConnectStep(I32 step) override { Tell("OnConnectStep", step); }
  I32 OnAuthRsp(U64 a, U64 b, U64 c, const char* formats) override {
    Tell("OnAuthRsp", a, b, c, formats);
    return formatChoice;
  }
  void OnPlayRsp(U32 a, U64 b, U32 c, U32 d, U32 e, U32 f, U32 g, U32 h, U32 i, U32 j) override {
    Tell("OnPlayRsp", a, b, c, d, e, f, g, h, i, j);
  }
  void OnNotice5() override { Tell("OnNotice5"); }
  void OnNotice6(const char* text) override { Tell("OnNotice6", text); }
  void OnNotice7() override { Tell("OnNotice7"); }
  void OnNotice8() override { Tell("OnNotice8"); }
  void OnNotice9(U64 a, U64 b, U64 c, U32 d, U32 e) override { Tell("OnNotice9", a, b, c, d, e); }
  void OnNotice10() override { Tell("OnNotice10"); }
  void OnVideoParamRsp(I32 a, U64 b, U16 c, U32 d, U16 e, U16 f) override { Tell("OnVideoParamRsp", a, b, c, d, e, f); }
  void OnNotice12() override { Tell("OnNotice12"); }
  void OnNotice13(U64 a, U64 b, U64 c, U32 d) override { Tell("OnNotice13", a, b, c, d); }
  void OnNotice14() override { Tell("OnNotice14"); }
  void OnErrorCode(U32 code, const char* text) override { Tell("OnErrorCode", code, text); }
  void OnFirstFrame(U64 a, U64 b, U64 c, U32 d) override { Tell("OnFirstFrame", a, b, c, d); }
  void OnNotice23() override { Tell("OnNotice23"); }
  void OnNotice24() override { Tell("OnNotice24"); }
  void OnNotice25() override { Tell("OnNotice25"); }

 private:
  template <class... Arguments>
  void Tell(const char* notice, const Arguments&... arguments) {
    Add(tests::Line(notice, arguments...));
  }
};

#endif
