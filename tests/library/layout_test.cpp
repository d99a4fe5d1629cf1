// The binary interface: the slot of every operation and the layout of every record that crosses a library boundary.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <numeric>
#include <type_traits>
#include <vector>

#include "base/base_log_interface.h"
#include "collect_interface/collect_interface.h"
#include "database_interface/database_interface.h"
#include "pass_interface/message_collect.h"
#include "pass_interface/pass_interface.h"
#include "qv_data_interface/qv_data_interface.h"
#include "tests/support/transcribed.h"
#include "ws_interface/ws_manager_interface.h"

namespace {

// MEMBERS(Type, a, b) is &Type::a, &Type::b.
#define PARENTHESES ()
#define AGAIN(...) AGAIN_2(AGAIN_2(AGAIN_2(AGAIN_2(__VA_ARGS__))))
#define AGAIN_2(...) AGAIN_1(AGAIN_1(AGAIN_1(AGAIN_1(__VA_ARGS__))))
#define AGAIN_1(...) ONCE(ONCE(__VA_ARGS__))
#define ONCE(...) __VA_ARGS__
#define MEMBER(Type, first, ...) &Type::first __VA_OPT__(, NEXT_MEMBER PARENTHESES(Type, __VA_ARGS__))
#define NEXT_MEMBER() MEMBER
#define MEMBERS(...) AGAIN(MEMBER(__VA_ARGS__))

// In the Itanium ABI, which g++ and clang follow on every system, a pointer to a virtual operation holds one more than
// the operation's place in the dispatch table in bytes.
template <class Operation>
std::size_t Slot(Operation operation) {
  std::size_t words[2];
  static_assert(sizeof operation == sizeof words);
  std::memcpy(words, &operation, sizeof words);
  return (words[0] - 1) / sizeof(void*);
}

// The operations stand side by side in this order. Since they begin at `first`, the destructor stands behind them.
template <class Interface, class... Types>
void InOrder(std::size_t first, Types Interface::*... operations) {
  static_assert(std::has_virtual_destructor_v<Interface>);
  std::vector<std::size_t> expected(sizeof...(operations));
  std::iota(expected.begin(), expected.end(), first);
  EXPECT_EQ((std::vector<std::size_t>{Slot(operations)...}), expected);
}

TEST(Interfaces, HaveTheirOperationsInTheirSlots) {
  InOrder(0, MEMBERS(qv_data_interface::IQVDataInterface, Init, ReleasePhoneConnect, GetPhoneConnect, SendInReq3,
                     SendInReq4, SendInReq5, SendInReq6, SendInReq7, SendInReq8, SendInReq9, SendInReq10, SendInReq11,
                     SendInMicParamReq, SendInReq13, SendInCameraParamReq, SendInReq15, SendInReq16, SendInReq17,
                     ChangeIsp));
  // The shared base comes first with its nineteen operations and the two entries of its destructor.
  InOrder(21, MEMBERS(qv_data_interface::IQVInternalDataInterface, SendMessageCollect, SetSdkVersion, RecordMilestone));
  InOrder(21, MEMBERS(qv_data_interface::IQVDataDummyReqInterface, SendDummyReq));
  InOrder(0, MEMBERS(qv_data_interface::IQVDataInterfaceNotic, OnStatus, OnServiceCode, OnChooseVideoFormat, OnPlayRsp,
                     OnFirstFrame, OnNotice6, OnNotice7, OnNotice8, OnNotice9, OnNotice10, OnNotice11, OnNotice12,
                     OnNotice13, OnVideoParamRsp, OnNotice15, OnNotice16, OnNotice17, OnIspList, OnNotice19));
  InOrder(0, MEMBERS(base::IBaseLogInterface, SetLogPath, SetLogName, SetLogSizeSetting, SetLogLevel, Reserved5,
                     SetLogModeSetting, SetLogCountSetting, Reserved8, Reserved9, WriteLog, Reserved11, Reserved12,
                     Reserved13, Reserved14, StartLog));
  InOrder(0, MEMBERS(collect_interface::ICollectInterface, SetCollectSdkType, DeleteInstanceInfo, InsertInstanceInfo,
                     UpdataInstanceSessionId, ReportMessageCollect));
  InOrder(16, MEMBERS(database_interface::IDatabaseInterface, SaveSessionCache, LoadSessionCache));
  InOrder(0, MEMBERS(pass_interface::IPassInterface, Initialise, Stop, Reserved3, RequestPhoneConnect,
                     RequestRefreshSession));
  InOrder(0, MEMBERS(pass_interface::IPassInterfaceNotic, OnPhoneConnectRsp, OnRefreshSessionRsp, OnServiceRsp3,
                     OnServiceRsp4, OnServiceRsp5, OnServiceRsp6, OnServiceNotice7, OnServiceRsp8, OnServiceNotice9,
                     OnServiceNotice10, OnServiceRsp11));
  InOrder(0, MEMBERS(ws_interface::IWSManagerInterface, Initialise, CreateWS, DestroyWS, Reserved4, Stop));
  InOrder(0, MEMBERS(ws_interface::IWSInterface, SetSessionId, SendReq2, SendReq3, SendReq4, SendReq5, SendReq6,
                     SendReq7, SendReq8, SendReq9, SendReq10, SendReq11, SendMicParamReq, SendReq13, SendCameraParamReq,
                     SendReq15, SendReq16, SendReq17, SendDummyReq));
  InOrder(0, MEMBERS(ws_interface::IWSInterfaceNotic, OnConnectState, OnConnectStep, OnAuthRsp, OnPlayRsp, OnNotice5,
                     OnNotice6, OnNotice7, OnNotice8, OnNotice9, OnNotice10, OnVideoParamRsp, OnNotice12, OnNotice13,
                     OnNotice14, OnNotice15, OnNotice16, OnNotice17, OnNotice18, OnNotice19, OnNotice20, OnErrorCode,
                     OnFirstFrame, OnNotice23, OnNotice24, OnNotice25));
}

// Where the members stand in a record, and its size behind them.
template <class Record, class... Types>
std::vector<std::size_t> Layout(Types Record::*... members) {
  static const Record record{};
  const auto* const start = reinterpret_cast<const char*>(&record);
  return {static_cast<std::size_t>(reinterpret_cast<const char*>(&(record.*members)) - start)..., sizeof(Record)};
}

#define LAYOUT(...) Layout(MEMBERS(__VA_ARGS__))

using Records = tests::Transcribed<>;

TEST_F(Records, HaveTheirLayout) {
  using namespace pass_interface;
  using namespace qv_data_interface;
  using namespace ws_interface;
  STEP(LAYOUT(QvVideoParam, videoFormat, width, height, frameRate, bitRate));
  STEP(LAYOUT(WSVideoParam, videoFormat, width, height, frameRate, bitRate));
  STEP(LAYOUT(QvDataSystemParam, wsOptionEnabled, wsManagerValue, wsOptionInterval, useWss, httpValue1, httpValue2));
  STEP(LAYOUT(QvLogParam, level, path, name, sizeSetting, modeSetting, countSetting));
  STEP(LAYOUT(IspItem, ispCode, label));
  STEP(LAYOUT(WSConnectInfo, sessionIdText, identityText, versionText, clientKind, initNumber, auxText, streamKind,
              reserved));
  STEP(LAYOUT(WSVideoInfo, videoParam, text1, text2));
  STEP(LAYOUT(WSDefaultParam, value1, value2, value3, value4));
  STEP(LAYOUT(WSSystemParam, wsOptionEnabled, wsOptionInterval, useWss, value4));
  static_assert(std::has_virtual_destructor_v<MessageCollectBaseData>);
  // The sizes of texts and maps are the runtime's; the order is not.
  auto fields = LAYOUT(MessageCollectBaseData, sessionId, targetId);
  const auto own =
      LAYOUT(MessageCollectStatusData, channel, wsDomain, wsPort, errorCode, statusText, sdkVersion, interfaceVersion,
             playResponseTime, firstFrameTime, releaseTime, connectingCount, connectingTime, disconnectedTime,
             connectedTime, connectedFlag, detailText, extraText, processName, milestones);
  fields.insert(fields.end(), own.begin(), own.end());
  const auto message = LAYOUT(MessageCollect, collectType, collectStatus, defaultMode, timestamp, tag, data);
  EXPECT_TRUE(std::is_sorted(fields.begin(), fields.end()) && std::is_sorted(message.begin(), message.end()));
}

}  // namespace
