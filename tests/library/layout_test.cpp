// The binary interface: the slot of every operation and the layout of every record that crosses a library boundary.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
#include "ws_interface/ws_manager_interface.h"

namespace {

using testing::ElementsAre;
using Data = qv_data_interface::IQVDataInterface;
using Internal = qv_data_interface::IQVInternalDataInterface;
using Dummy = qv_data_interface::IQVDataDummyReqInterface;
using Notic = qv_data_interface::IQVDataInterfaceNotic;
using Log = base::IBaseLogInterface;
using Collect = collect_interface::ICollectInterface;
using Database = database_interface::IDatabaseInterface;
using Pass = pass_interface::IPassInterface;
using PassNotic = pass_interface::IPassInterfaceNotic;
using Manager = ws_interface::IWSManagerInterface;
using Ws = ws_interface::IWSInterface;
using WsNotic = ws_interface::IWSInterfaceNotic;

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
  InOrder(0, &Data::Init, &Data::ReleasePhoneConnect, &Data::GetPhoneConnect, &Data::SendInReq3, &Data::SendInReq4,
          &Data::SendInReq5, &Data::SendInReq6, &Data::SendInReq7, &Data::SendInReq8, &Data::SendInReq9,
          &Data::SendInReq10, &Data::SendInReq11, &Data::SendInMicParamReq, &Data::SendInReq13,
          &Data::SendInCameraParamReq, &Data::SendInReq15, &Data::SendInReq16, &Data::SendInReq17, &Data::ChangeIsp);
  // The shared base comes first with its nineteen operations and the two entries of its destructor.
  InOrder(21, &Internal::SendMessageCollect, &Internal::SetSdkVersion, &Internal::RecordMilestone);
  InOrder(21, &Dummy::SendDummyReq);
  InOrder(0, &Notic::OnStatus, &Notic::OnServiceCode, &Notic::OnChooseVideoFormat, &Notic::OnPlayRsp,
          &Notic::OnFirstFrame, &Notic::OnNotice6, &Notic::OnNotice7, &Notic::OnNotice8, &Notic::OnNotice9,
          &Notic::OnNotice10, &Notic::OnNotice11, &Notic::OnNotice12, &Notic::OnNotice13, &Notic::OnVideoParamRsp,
          &Notic::OnNotice15, &Notic::OnNotice16, &Notic::OnNotice17, &Notic::OnIspList, &Notic::OnNotice19);
  InOrder(0, &Log::SetLogPath, &Log::SetLogName, &Log::SetLogSizeSetting, &Log::SetLogLevel, &Log::Reserved5,
          &Log::SetLogModeSetting, &Log::SetLogCountSetting, &Log::Reserved8, &Log::Reserved9, &Log::WriteLog,
          &Log::Reserved11, &Log::Reserved12, &Log::Reserved13, &Log::Reserved14, &Log::StartLog);
  InOrder(0, &Collect::SetCollectSdkType, &Collect::DeleteInstanceInfo, &Collect::InsertInstanceInfo,
          &Collect::UpdataInstanceSessionId, &Collect::ReportMessageCollect);
  InOrder(16, &Database::SaveSessionCache, &Database::LoadSessionCache);
  InOrder(0, &Pass::Initialise, &Pass::Stop, &Pass::Reserved3, &Pass::RequestPhoneConnect,
          &Pass::RequestRefreshSession);
  InOrder(0, &PassNotic::OnPhoneConnectRsp, &PassNotic::OnRefreshSessionRsp, &PassNotic::OnServiceRsp3,
          &PassNotic::OnServiceRsp4, &PassNotic::OnServiceRsp5, &PassNotic::OnServiceRsp6, &PassNotic::OnServiceNotice7,
          &PassNotic::OnServiceRsp8, &PassNotic::OnServiceNotice9, &PassNotic::OnServiceNotice10,
          &PassNotic::OnServiceRsp11);
  InOrder(0, &Manager::Initialise, &Manager::CreateWS, &Manager::DestroyWS, &Manager::Reserved4, &Manager::Stop);
  InOrder(0, &Ws::SetSessionId, &Ws::SendReq2, &Ws::SendReq3, &Ws::SendReq4, &Ws::SendReq5, &Ws::SendReq6,
          &Ws::SendReq7, &Ws::SendReq8, &Ws::SendReq9, &Ws::SendReq10, &Ws::SendReq11, &Ws::SendMicParamReq,
          &Ws::SendReq13, &Ws::SendCameraParamReq, &Ws::SendReq15, &Ws::SendReq16, &Ws::SendReq17, &Ws::SendDummyReq);
  InOrder(0, &WsNotic::OnConnectState, &WsNotic::OnConnectStep, &WsNotic::OnAuthRsp, &WsNotic::OnPlayRsp,
          &WsNotic::OnNotice5, &WsNotic::OnNotice6, &WsNotic::OnNotice7, &WsNotic::OnNotice8, &WsNotic::OnNotice9,
          &WsNotic::OnNotice10, &WsNotic::OnVideoParamRsp, &WsNotic::OnNotice12, &WsNotic::OnNotice13,
          &WsNotic::OnNotice14, &WsNotic::OnNotice15, &WsNotic::OnNotice16, &WsNotic::OnNotice17, &WsNotic::OnNotice18,
          &WsNotic::OnNotice19, &WsNotic::OnNotice20, &WsNotic::OnErrorCode, &WsNotic::OnFirstFrame,
          &WsNotic::OnNotice23, &WsNotic::OnNotice24, &WsNotic::OnNotice25);
}

// Where the members stand in a record, and its size.
template <class Record, class... Types>
std::vector<std::size_t> Layout(Types Record::*... members) {
  static const Record record{};
  const auto* const start = reinterpret_cast<const char*>(&record);
  return {static_cast<std::size_t>(reinterpret_cast<const char*>(&(record.*members)) - start)..., sizeof(Record)};
}

TEST(Records, HaveTheirLayout) {
  using Video = qv_data_interface::QvVideoParam;
  EXPECT_THAT(Layout(&Video::videoFormat, &Video::width, &Video::height, &Video::frameRate, &Video::bitRate),
              ElementsAre(0, 4, 6, 8, 12, 16));
  using WsVideo = ws_interface::WSVideoParam;
  EXPECT_THAT(Layout(&WsVideo::videoFormat, &WsVideo::width, &WsVideo::height, &WsVideo::frameRate, &WsVideo::bitRate),
              ElementsAre(0, 4, 6, 8, 12, 16));
  using System = qv_data_interface::QvDataSystemParam;
  EXPECT_THAT(Layout(&System::wsOptionEnabled, &System::wsManagerValue, &System::wsOptionInterval, &System::useWss,
                     &System::httpValue1, &System::httpValue2),
              ElementsAre(0, 4, 8, 12, 16, 20, 24));
  using LogParam = qv_data_interface::QvLogParam;
  EXPECT_THAT(Layout(&LogParam::level, &LogParam::path, &LogParam::name, &LogParam::sizeSetting, &LogParam::modeSetting,
                     &LogParam::countSetting),
              ElementsAre(0, 4, 260, 516, 520, 524, 528));
  using Isp = qv_data_interface::IspItem;
  EXPECT_THAT(Layout(&Isp::ispCode, &Isp::label), ElementsAre(0, 8, 16));
  using Info = ws_interface::WSConnectInfo;
  EXPECT_THAT(Layout(&Info::sessionIdText, &Info::identityText, &Info::versionText, &Info::clientKind,
                     &Info::initNumber, &Info::auxText, &Info::streamKind, &Info::reserved),
              ElementsAre(0, 256, 512, 768, 772, 776, 1032, 1040, 1048));
  using VideoInfo = ws_interface::WSVideoInfo;
  EXPECT_THAT(Layout(&VideoInfo::videoParam, &VideoInfo::text1, &VideoInfo::text2), ElementsAre(0, 16, 272, 528));
  using Default = ws_interface::WSDefaultParam;
  EXPECT_THAT(Layout(&Default::value1, &Default::value2, &Default::value3, &Default::value4),
              ElementsAre(0, 4, 8, 9, 12));
  using WsSystem = ws_interface::WSSystemParam;
  EXPECT_THAT(Layout(&WsSystem::wsOptionEnabled, &WsSystem::wsOptionInterval, &WsSystem::useWss, &WsSystem::value4),
              ElementsAre(0, 4, 8, 9, 12));

  using Base = pass_interface::MessageCollectBaseData;
  using Status = pass_interface::MessageCollectStatusData;
  static_assert(std::has_virtual_destructor_v<Base>);
  auto fields = Layout(&Base::sessionId, &Base::targetId);
  const auto own =
      Layout(&Status::channel, &Status::wsDomain, &Status::wsPort, &Status::errorCode, &Status::statusText,
             &Status::sdkVersion, &Status::interfaceVersion, &Status::playResponseTime, &Status::firstFrameTime,
             &Status::releaseTime, &Status::connectingCount, &Status::connectingTime, &Status::disconnectedTime,
             &Status::connectedTime, &Status::connectedFlag, &Status::detailText, &Status::extraText,
             &Status::processName, &Status::milestones);
  fields.insert(fields.end(), own.begin(), own.end());
  using Message = pass_interface::MessageCollect;
  for (const auto& offsets : {fields, Layout(&Message::collectType, &Message::collectStatus, &Message::defaultMode,
                                             &Message::timestamp, &Message::tag, &Message::data)}) {
    EXPECT_TRUE(std::is_sorted(offsets.begin(), offsets.end()));
  }
}

}  // namespace
