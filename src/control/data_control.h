// The controller: the one object behind all public interfaces. It owns one connection to a phone, from Init to release,
// and is the sink of the HTTP service's and the WebSocket library's notices.
//
// Threads: the front end's calls, the HTTP service's notices and the WebSocket library's notices enter side by side.
// The controller starts no thread. It calls out with no lock held but ispLock during a change of line; every other lock
// is held for a moment only, and no two of ispLock and collectMutex together.
// Ownership: made by the factories as a shared pointer. The services get shared pointers to it as their sink; what it
// holds itself it lets go in ReleasePhoneConnect, which the destructor calls.
//
// The source files follow the life of a connection: construct, initialise, phone_connect, service_answers,
// websocket_setup, websocket_events, commands, release; internal_operations stand beside them.
#ifndef CONTROL_DATA_CONTROL_H
#define CONTROL_DATA_CONTROL_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "collect_interface/collect_interface.h"
#include "control/connect_request.h"
#include "pass_interface/instance_info.h"
#include "pass_interface/pass_interface.h"
#include "pass_interface/pass_interface_notic.h"
#include "qv_data_interface/qv_data_interface.h"
#include "sync/front_end_scope.h"
#include "sync/guarded.h"
#include "sync/rebuild_lock.h"
#include "sync/spread_pointer.h"
#include "telemetry/status_template.h"
#include "ws_interface/ws_manager_interface.h"

namespace qv_data_interface {

enum InitState : std::uint32_t { kStateIdle = 0, kStateInitialising = 1, kStateReady = 2, kStateReleasing = 3 };

class CQVDataControl final : public IQVInternalDataInterface,
                             public IQVDataDummyReqInterface,
                             public ws_interface::IWSInterfaceNotic,
                             public pass_interface::IPassInterfaceNotic,
                             public std::enable_shared_from_this<CQVDataControl> {
 public:
  explicit CQVDataControl(bool isInternal);
  ~CQVDataControl() override;
  CQVDataControl(const CQVDataControl&) = delete;
  CQVDataControl& operator=(const CQVDataControl&) = delete;

  // IQVDataInterface. What each does, for the caller, stands there.
  std::int32_t Init(const char* credential1, const char* credential2, const char* credential3, const char* targetId,
                    std::int32_t modeFlag, std::shared_ptr<IQVDataInterfaceNotic> notice,
                    const QvVideoParam* videoParam, const QvDataSystemParam* systemParam, std::int32_t reconnectNumber,
                    const char* baseUrl) override;
  void ReleasePhoneConnect() override;
  std::int32_t GetPhoneConnect() override;
  std::int32_t SendInReq3(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                          std::int32_t count) override;
  std::int32_t SendInReq4(std::uint64_t value1, std::uint64_t value2) override;
  std::int32_t SendInReq5(float value1, float value2, float value3, float value4, float value5, float value6,
                          float value7, float value8) override;
  std::int32_t SendInReq6(std::int32_t value1, float value2, float value3, float value4) override;
  std::int32_t SendInReq7(const char* text1, const char* text2) override;
  std::int32_t SendInReq8(const char* text) override;
  std::int32_t SendInReq9(const char* text) override;
  std::int32_t SendInReq10(std::uint64_t value1, std::uint64_t value2) override;
  std::int32_t SendInReq11(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                           std::int32_t value4) override;
  std::int32_t SendInMicParamReq(std::int32_t value1, std::int32_t value2, std::int32_t value3) override;
  std::int32_t SendInReq13(std::uint64_t value1, std::uint64_t value2) override;
  std::int32_t SendInCameraParamReq(std::int32_t videoFormat, std::int32_t value2, std::int32_t value3,
                                    std::uint64_t value4, std::int32_t value5) override;
  std::int32_t SendInReq15(std::uint64_t value1, std::uint64_t value2) override;
  std::int32_t SendInReq16(std::uint64_t value1, std::uint64_t value2) override;
  std::int32_t SendInReq17(std::int32_t value) override;
  std::int32_t ChangeIsp(std::uint32_t ispCode) override;

  // IQVInternalDataInterface.
  void SendMessageCollect(int collectType, int collectStatus, int errorCode, const char* detail,
                          const char* extra) override;
  void SetSdkVersion(const char* version) override;
  void RecordMilestone(const char* name, std::int64_t timeMs) override;

  // IQVDataDummyReqInterface.
  std::int32_t SendDummyReq() override;

  // IPassInterfaceNotic; on the HTTP service's thread.
  void OnPhoneConnectRsp(std::int32_t transportResult, std::uint32_t httpStatus,
                         std::shared_ptr<pass_interface::InstanceInfo> answer) override;
  void OnRefreshSessionRsp(std::int32_t transportResult, std::uint32_t httpStatus,
                           std::shared_ptr<pass_interface::RefreshSessionRsp> answer) override;

  // IWSInterfaceNotic; on the WebSocket library's threads.
  void OnConnectState(std::uint32_t state) override;
  void OnConnectStep(std::int32_t step) override;
  std::int32_t OnAuthRsp(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                         const char* formats) override;
  void OnPlayRsp(std::uint32_t value1, std::uint64_t value2, std::uint32_t value3, std::uint32_t value4,
                 std::uint32_t value5, std::uint32_t value6, std::uint32_t value7, std::uint32_t value8,
                 std::uint32_t value9, std::uint32_t value10) override;
  void OnNotice5() override;
  void OnNotice6(const char* text) override;
  void OnNotice7() override;
  void OnNotice8() override;
  void OnNotice9(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3, std::uint32_t value4,
                 std::uint32_t value5) override;
  void OnNotice10() override;
  void OnVideoParamRsp(std::int32_t result, std::uint64_t value, std::uint16_t frameRate, std::uint32_t bitRate,
                       std::uint16_t width, std::uint16_t height) override;
  void OnNotice12() override;
  void OnNotice13(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3, std::uint32_t value4) override;
  void OnNotice14() override;
  void OnErrorCode(std::uint32_t code, const char* text) override;
  void OnFirstFrame(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3, std::uint32_t value4) override;
  void OnNotice23() override;
  void OnNotice24() override;
  void OnNotice25() override;

 private:
  using FrontEnd = std::shared_ptr<IQVDataInterfaceNotic>;
  using Status = StatusTemplate::Status;
  // Each Init and each release begins a new one. A call that began under an earlier one works for a connection that has
  // been released: what it still makes, it destroys itself.
  using Generation = std::uint32_t;

  // initialise
  std::int32_t InitServices(const QvDataSystemParam* systemParam);
  std::int32_t ValidateAndStoreParams(const char* baseUrl, const char* credential1, const char* credential2,
                                      const char* credential3, const char* targetId, std::int32_t modeFlag,
                                      const QvVideoParam* videoParam, const QvDataSystemParam* systemParam);
  std::int32_t MakeCacheKey(const std::string& a, const std::string& b, const std::string& c);
  void SetupServices();

  // phone_connect
  bool LoadCachedInfo(pass_interface::InstanceInfo& info);
  void HandlePhoneConnect(const pass_interface::InstanceInfo& info, Generation since);
  void RegisterInstance(const pass_interface::InstanceInfo& info, Generation since);
  void InsertInstanceRow(collect_interface::ICollectInterface& collector, Generation since);
  static void TellIspList(const FrontEnd& frontEnd, const pass_interface::InstanceInfo& info);

  // service_answers
  void ReportFailedAnswer(const FrontEnd& frontEnd, std::int32_t code, const std::string& requestTag);
  template <class Answer>
  void ReportRefusal(const FrontEnd& frontEnd, const Answer& answer, Generation since);
  static void SaveToCache(const std::string& key, const pass_interface::InstanceInfo& info);

  // websocket_setup
  struct ConnectRecords;
  bool FillConnectRecords(ConnectRecords& records);
  std::string MakeUrl(const pass_interface::StreamEndpoints& endpoints);
  enum class InitWSOutcome { kConnectionHeld, kFailed, kOvertakenByRelease };
  InitWSOutcome InitWS(const pass_interface::StreamEndpoints& endpoints, Generation since);
  bool KeepOrDestroy(ws_interface::IWSManagerInterface& manager,
                     const std::shared_ptr<ws_interface::IWSInterface>& created, Generation since);
  void TellNewerSessionIds(ws_interface::IWSInterface& connection, std::string told, Generation since);
  // Reports a failure and makes the outcome a result: 0 or -1. Apart from InitWS, because it calls the front end and
  // fills the telemetry, which ChangeIsp must not do with ispLock held.
  std::int32_t FinishInitWS(const FrontEnd& frontEnd, InitWSOutcome outcome);
  // Destroys the connection, if there is one, while that generation lasts. Of several threads only one gets to do it.
  void DropConnection(Generation since);

  // websocket_events
  void OnConnected(const FrontEnd& frontEnd);
  void OnConnecting(const FrontEnd& frontEnd);
  void OnDisconnected(const FrontEnd& frontEnd);
  std::int32_t ChooseVideoFormat(const FrontEnd& frontEnd, const std::vector<std::int32_t>& offered);
  void RefreshSession();
  template <class... Params, class... Args>
  static void Relay(const FrontEnd& frontEnd, void (IQVDataInterfaceNotic::*operation)(Params...), Args... args);

  // commands
  bool GateIsOpen() const;
  template <class... Params, class... Args>
  std::int32_t Forward(std::int32_t (ws_interface::IWSInterface::*operation)(Params...), Args... args);
  // Nothing when the line is not known.
  std::optional<InitWSOutcome> ChangeIspLocked(std::uint32_t ispCode, Generation since) QV_REQUIRES(ispLock);
  void TakeOverGrantedInfoLocked() QV_REQUIRES(ispLock);
  const pass_interface::StreamEndpoints* ChooseEndpointsLocked(std::uint32_t ispCode, Generation since)
      QV_REQUIRES(ispLock);

  // shared by the stages
  // Whether what was begun in that generation may still be kept.
  bool IsCurrent(Generation since) const;
  void RecordMilestoneNow(const char* name);
  // Every call of the front end goes through here: tell(notice), unless there is no notice.
  template <class Call>
  static void Tell(const FrontEnd& frontEnd, Call&& tell) {
    if (!frontEnd) return;
    const FrontEndScope scope;
    std::forward<Call>(tell)(*frontEnd);
  }
  static void TellStatus(const FrontEnd& frontEnd, std::int32_t code);

  // Constant.
  const bool isInternal;

  // Set by Init, read from all threads; each synchronises itself. Records are replaced, never changed in place.
  Guarded<std::shared_ptr<const QvVideoParam>> videoParam;
  Guarded<std::shared_ptr<const QvDataSystemParam>> systemParam;
  Guarded<std::string> baseUrl;
  Guarded<std::string> credential1;
  Guarded<std::string> credential2;
  Guarded<std::string> credential3;
  Guarded<std::string> sessionId;
  Guarded<std::string> targetId;
  Guarded<std::string> cacheKey;
  std::atomic<std::int32_t> modeFlag{0};
  std::atomic<std::int32_t> reconnectNumber{1};

  // Grows with every authentication answer.
  Guarded<std::vector<std::int32_t>> supportedFormats;

  // Serialises changes of the carrier line, each with its rebuild of the connection, and guards what they read.
  RebuildLock ispLock;
  pass_interface::InstanceInfo instanceInfo QV_GUARDED_BY(ispLock);
  Generation instanceInfoSince QV_GUARDED_BY(ispLock) = 0;
  std::uint32_t currentIspCode QV_GUARDED_BY(ispLock) = kIspCodeDefault;
  // The newest granted record, on its way into instanceInfo: whoever holds ispLock next takes it over, so that an
  // answer never waits for a rebuild (which may be waiting, in a service, for the thread that brings the answer).
  struct GrantedInfo {
    pass_interface::InstanceInfo info;
    Generation since;
  };
  Guarded<std::shared_ptr<const GrantedInfo>> grantedInfo;

  // Holds messageCollect and its lock, collectMutex.
  StatusTemplate status;
  // Of the collector's row of this connection; 0 while there is none.
  Guarded<std::int32_t> collectRowId;

  // Copied out for each use. Taking wsConnection out is what gives the right to destroy it. A connection and a row go
  // in only while their generation lasts and the state is ready, which is checked under the holder's lock; a release
  // ends both before it takes them out, so nothing is ever left behind in them.
  Guarded<FrontEnd> notice;
  Guarded<std::shared_ptr<pass_interface::IPassInterface>> passInterface;
  Guarded<std::shared_ptr<ws_interface::IWSManagerInterface>> wsManager;
  // Every command copies it, from whichever thread.
  SpreadPointer<ws_interface::IWSInterface> wsConnection;

  std::atomic<std::uint32_t> initState{kStateIdle};
  ConnectRequest connectRequested;
  std::atomic<bool> firstFrameSeen{false};
  std::atomic<Generation> generation{0};
};

}  // namespace qv_data_interface

#endif
