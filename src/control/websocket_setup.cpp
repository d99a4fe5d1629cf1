// InitWS: from endpoints to a connection object. Runs on the thread that has the session in hand (see phone_connect)
// or, under ispLock, on the front end's thread inside ChangeIsp.
#include <cstddef>
#include <cstring>
#include <string>

#include "control/data_control.h"
#include "qv_data_interface/result_codes.h"
#include "surface/log.h"
#include "surface/version.h"

namespace qv_data_interface {
namespace {

using ws_interface::WSVideoParam;

// WSVideoInfo begins with a copy of the front end's video record.
static_assert(sizeof(WSVideoParam) == sizeof(QvVideoParam) &&
              offsetof(WSVideoParam, videoFormat) == offsetof(QvVideoParam, videoFormat) &&
              offsetof(WSVideoParam, width) == offsetof(QvVideoParam, width) &&
              offsetof(WSVideoParam, height) == offsetof(QvVideoParam, height) &&
              offsetof(WSVideoParam, frameRate) == offsetof(QvVideoParam, frameRate) &&
              offsetof(WSVideoParam, bitRate) == offsetof(QvVideoParam, bitRate));

// Refuses a text that does not fit with its NUL; nothing is cut.
template <std::size_t size>
bool CopyText(const std::string& text, char (&field)[size]) {
  if (text.size() >= size) return false;
  std::memcpy(field, text.data(), text.size());
  return true;
}

}  // namespace

struct CQVDataControl::ConnectRecords {
  ws_interface::WSConnectInfo connectInfo{};
  ws_interface::WSVideoInfo videoInfo{};
  ws_interface::WSDefaultParam defaultParam{};
  ws_interface::WSSystemParam systemParam{};
};

bool CQVDataControl::FillConnectRecords(ConnectRecords& records) {
  const auto video = videoParam.Copy();
  const auto system = systemParam.Copy();
  if (!video || !system) return false;

  auto& connect = records.connectInfo;
  if (!CopyText(sessionId.Copy(), connect.sessionIdText) || !CopyText(targetId.Copy(), connect.identityText) ||
      !CopyText(kVersion, connect.versionText)) {
    return false;
  }
  connect.clientKind = 3;
  connect.initNumber = modeFlag;
  connect.streamKind = 2;

  auto& wanted = records.videoInfo.videoParam;
  wanted.videoFormat = video->videoFormat;
  wanted.width = video->width;
  wanted.height = video->height;
  wanted.frameRate = video->frameRate;
  wanted.bitRate = video->bitRate;

  records.defaultParam.value1 = 1;
  records.defaultParam.value2 = 48000;
  records.defaultParam.value3 = 2;

  records.systemParam.wsOptionEnabled = system->wsOptionEnabled ? 1 : 0;
  records.systemParam.wsOptionInterval = static_cast<std::int32_t>(system->wsOptionInterval);
  records.systemParam.useWss = system->useWss ? 1 : 0;
  return true;
}

std::string CQVDataControl::MakeUrl(const pass_interface::StreamEndpoints& endpoints) {
  const auto system = systemParam.Copy();
  // No stream, which keeps a failed allocation to itself and hands out a part of the URL.
  return (system && system->useWss ? "wss://" : "ws://") + endpoints.webSocketDomain + ":" +
         std::to_string(endpoints.webSocketPort);
}

bool CQVDataControl::KeepOrDestroy(ws_interface::IWSManagerInterface& manager,
                                   const std::shared_ptr<ws_interface::IWSInterface>& created, Generation since) {
  bool isKept = false;
  try {
    isKept = wsConnection.PutIfEmpty(created, [&] { return IsCurrent(since); });
  } catch (...) {
    // No memory for its place: nobody would destroy it later.
    manager.DestroyWS(created);
    throw;
  }
  if (!isKept) manager.DestroyWS(created);
  return isKept;
}

// A session may be refreshed between the copy of its id for a new connection and the moment that connection can be
// found.
void CQVDataControl::TellNewerSessionIds(ws_interface::IWSInterface& connection, std::string told, Generation since) {
  for (std::string newest; (newest = sessionId.Copy()) != told && generation == since; told.swap(newest)) {
    connection.SetSessionId(newest.c_str());
  }
}

CQVDataControl::InitWSOutcome CQVDataControl::InitWS(const pass_interface::StreamEndpoints& endpoints,
                                                     Generation since) {
  ConnectRecords records;
  const bool isFilled = FillConnectRecords(records);
  const std::string url = MakeUrl(endpoints);
  const std::string credential = credential1.Copy();
  const auto manager = wsManager.Copy();
  // Copied first and checked then, so that all of it is of this generation.
  if (generation != since) return InitWSOutcome::kOvertakenByRelease;
  if (!isFilled) return InitWSOutcome::kFailed;

  if (wsConnection.IsEmpty() && manager) {
    const std::shared_ptr<ws_interface::IWSInterfaceNotic> sink = shared_from_this();
    const auto created = manager->CreateWS(credential.c_str(), url.c_str(), &records.connectInfo, &records.videoInfo,
                                           &records.defaultParam, &records.systemParam, sink, 0);
    // Not kept when another answer was faster, whose connection stays, or when a release has passed.
    if (created && KeepOrDestroy(*manager, created, since)) {
      TellNewerSessionIds(*created, records.connectInfo.sessionIdText, since);
    }
  }
  // Looked up first and checked then: a release that comes in between has taken the connection out, and is no failure.
  const bool isHeld = !wsConnection.IsEmpty();
  if (generation != since || initState == kStateReleasing) return InitWSOutcome::kOvertakenByRelease;
  return isHeld ? InitWSOutcome::kConnectionHeld : InitWSOutcome::kFailed;
}

std::int32_t CQVDataControl::FinishInitWS(const FrontEnd& frontEnd, InitWSOutcome outcome) {
  if (outcome == InitWSOutcome::kConnectionHeld) return 0;
  // A front end that releases knows why there is no connection.
  if (outcome == InitWSOutcome::kOvertakenByRelease) return -1;
  QV_LOG(kLogError, "[QV_DATA_INTERFACE][%s]Init WS failed;Error code [%d]", targetId.Copy().c_str(),
         static_cast<int>(kResultWsInitFailed));
  TellStatus(frontEnd, kResultWsInitFailed);
  SendMessageCollect(0, 0, kResultWsInitFailed, "", "");
  return -1;
}

void CQVDataControl::DropConnection(Generation since) {
  const auto manager = wsManager.Copy();
  if (!manager) return;
  const auto connection = wsConnection.TakeIf([&] { return generation == since; });
  if (connection) manager->DestroyWS(connection);
}

}  // namespace qv_data_interface
