#include "reference/ws_interface/ws_manager.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>

#include "reference/ws_interface/log.h"

namespace reference::ws {
namespace {

// Thrown and caught in this file.
struct Refusal : std::runtime_error {
  using std::runtime_error::runtime_error;
};

std::string CheckedText(const char* text, const char* name) {
  switch (CheckText(text)) {
    case kTaken:
      return text;
    case kTextTooLong:
      throw Refusal(std::string(name) + " has more than " + std::to_string(kMaxTextSize) + " bytes");
    default:
      throw Refusal(std::string(name) + " is null or not UTF-8");
  }
}

template <std::size_t kSize>
std::string RecordText(const char (&text)[kSize], const char* name) {
  if (std::memchr(text, '\0', kSize) == nullptr) {
    throw Refusal(std::string(name) + " has no NUL within its " + std::to_string(kSize) + " characters");
  }
  return CheckedText(text, name);
}

std::chrono::milliseconds KeepAlive(const ws_interface::WSSystemParam& system) {
  if (system.wsOptionEnabled == 0) return {};
  if (system.wsOptionInterval <= 0) throw Refusal("wsOptionInterval is not positive, in ms");
  return std::chrono::milliseconds(system.wsOptionInterval);
}

ConnectionSettings ReadSettings(const char* credential1, const char* url,
                                const ws_interface::WSConnectInfo* connectInfo,
                                const ws_interface::WSVideoInfo* videoInfo,
                                const ws_interface::WSDefaultParam* defaultParam,
                                const ws_interface::WSSystemParam* systemParam) {
  if (connectInfo == nullptr || videoInfo == nullptr || defaultParam == nullptr || systemParam == nullptr) {
    throw Refusal("a parameter record is null; all four are needed");
  }
  const std::string urlText = CheckedText(url, "the URL");
  const std::optional<Endpoint> endpoint = ParseWebSocketUrl(urlText);
  if (!endpoint) throw Refusal("the URL \"" + Printable(urlText) + "\" is not " + kWebSocketUrlForm);

  ConnectionSettings settings;
  settings.endpoint = *endpoint;
  settings.auth.credential1 = CheckedText(credential1, "credential1");
  settings.auth.sessionId = RecordText(connectInfo->sessionIdText, "sessionIdText");
  settings.auth.targetId = RecordText(connectInfo->identityText, "identityText");
  settings.auth.version = RecordText(connectInfo->versionText, "versionText");
  settings.auth.clientKind = connectInfo->clientKind;
  settings.auth.initNumber = connectInfo->initNumber;
  settings.auth.streamKind = connectInfo->streamKind;
  settings.video = videoInfo->videoParam;
  settings.keepAlive = KeepAlive(*systemParam);
  return settings;
}

}  // namespace

WsManager::~WsManager() {
  Stop();
}

std::int32_t WsManager::Initialise(std::int32_t, std::uint32_t wsManagerValue) {
  if (wsManagerValue == 0) {
    LogFailure("Initialise", "the time-out is 0, 1 ms or more is allowed");
    return kBadArgument;
  }
  try {
    const std::lock_guard<std::mutex> lock(managerMutex);
    timeout = std::chrono::milliseconds(wsManagerValue);
    if (!ioThread) ioThread = std::make_shared<SharedIoThread>();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& exception) {
    LogFailure("Initialise: no thread could be started", exception.what());
    return kNoThread;
  }
  return kTaken;
}

std::shared_ptr<ws_interface::IWSInterface> WsManager::CreateWS(const char* credential1, const char* url,
                                                                const ws_interface::WSConnectInfo* connectInfo,
                                                                const ws_interface::WSVideoInfo* videoInfo,
                                                                const ws_interface::WSDefaultParam* defaultParam,
                                                                const ws_interface::WSSystemParam* systemParam,
                                                                std::shared_ptr<ws_interface::IWSInterfaceNotic> notic,
                                                                std::uint64_t) {
  try {
    ConnectionSettings settings = ReadSettings(credential1, url, connectInfo, videoInfo, defaultParam, systemParam);
    if (!notic) throw Refusal("there is no notice interface to report to");
    const std::lock_guard<std::mutex> lock(managerMutex);
    if (!ioThread) throw Refusal("the manager is not initialised");
    settings.timeout = timeout;
    auto connection = std::make_shared<Connection>(std::move(settings), notic, ioThread);
    // So that nothing can fail once it has started.
    connections.reserve(connections.size() + 1);
    connection->Start();
    connections.push_back(connection);
    return connection;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& refusal) {
    LogFailure("CreateWS", refusal.what());
    return nullptr;
  }
}

void WsManager::DestroyWS(std::shared_ptr<ws_interface::IWSInterface> connection) {
  std::shared_ptr<Connection> mine;
  {
    const std::lock_guard<std::mutex> lock(managerMutex);
    const auto found = std::find(connections.begin(), connections.end(), connection);
    if (found == connections.end()) return;
    mine = *found;
  }
  // Forgotten only when it is closed: a second thread that destroys it too finds it, and waits for the notice as well.
  mine->Close();
  Forget(mine);
}

void WsManager::Stop() {
  std::shared_ptr<SharedIoThread> ending;
  {
    const std::lock_guard<std::mutex> lock(managerMutex);
    ending.swap(ioThread);
  }
  while (const std::shared_ptr<Connection> connection = AnyStopped()) {
    connection->Close();
    Forget(connection);
  }
  if (ending) ending->Stop();
}

// One at a time rather than as a list, so that stopping needs no memory. Those of a share that another Initialise has
// taken meanwhile are none.
std::shared_ptr<Connection> WsManager::AnyStopped() {
  const std::lock_guard<std::mutex> lock(managerMutex);
  const auto found = std::find_if(connections.begin(), connections.end(),
                                  [this](const auto& connection) { return !connection->RunsOn(ioThread.get()); });
  return found != connections.end() ? *found : nullptr;
}

void WsManager::Forget(const std::shared_ptr<Connection>& closed) {
  const std::lock_guard<std::mutex> lock(managerMutex);
  std::erase(connections, closed);
}

}  // namespace reference::ws
