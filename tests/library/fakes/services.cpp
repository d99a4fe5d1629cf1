#include "tests/library/fakes/services.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <functional>
#include <numeric>
#include <thread>

#include "base/base_log_interface.h"
#include "base/mini_jump.h"
#include "base/thread_id.h"
#include "collect_interface/collect_interface.h"
#include "database_interface/database_interface.h"
#include "pass_interface/encryption.h"
#include "pass_interface/pass_interface.h"
#include "tests/library/fakes/recorder.h"
#include "ws_interface/ws_manager_interface.h"

namespace fakes {
namespace {

#define RESERVED(number)             \
  void Reserved##number() override { \
    Record("Reserved" #number);      \
  }
#define RESERVED_4(a, b, c, d) RESERVED(a) RESERVED(b) RESERVED(c) RESERVED(d)

struct FakeLog final : base::IBaseLogInterface {
  void SetLogPath(const char* directory) override { Record("log.SetLogPath", directory); }
  void SetLogName(const char* name) override { Record("log.SetLogName", name); }
  void SetLogSizeSetting(const int& value) override { Record("log.SetLogSizeSetting", value); }
  void SetLogLevel(const int& value) override { Record("log.SetLogLevel", value); }
  RESERVED(5)
  void SetLogModeSetting(const int& value) override { Record("log.SetLogModeSetting", value); }
  void SetLogCountSetting(const int& value) override { Record("log.SetLogCountSetting", value); }
  RESERVED(8)
  RESERVED(9)
  void WriteLog(const int& level, const long& threadId, const char* format, ...) override SDK_PRINTF_FORMAT(4, 5) {
    char text[4096];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    // The tag that every line begins with is left out of the record.
    const std::string tag = "[QV_DATA_INTERFACE]";
    std::string line = text;
    line = line.rfind(tag, 0) == 0 ? line.substr(tag.size()) : "without the tag: " + line;
    if (threadId != base::GetTid()) line = "from a wrong thread: " + line;
    Recorder::Get().Add("log" + std::to_string(level) + " " + line);
  }
  RESERVED_4(11, 12, 13, 14)
  void StartLog() override { Record("log.StartLog"); }
};

struct FakeCollector final : collect_interface::ICollectInterface {
  void SetCollectSdkType(const char* sdkType) override { Record("collect.SetCollectSdkType", sdkType); }
  int DeleteInstanceInfo(int rowId) override {
    Record("collect.DeleteInstanceInfo", rowId);
    const std::lock_guard lock(StateMutex());
    State().liveRows.erase(rowId);
    return State().deleteResult;
  }
  int InsertInstanceInfo(int* rowId, const char* targetId, const char* sessionId, int defaultMode,
                         const char* channel) override {
    Record("collect.InsertInstanceInfo", targetId, sessionId, defaultMode, channel);
    const std::lock_guard lock(StateMutex());
    if (State().insertResult == 0) {
      *rowId = State().nextRow++;
      State().liveRows.insert(*rowId);
    }
    return State().insertResult;
  }
  int UpdataInstanceSessionId(int rowId, const char* sessionId, int length) override {
    Record("collect.UpdataInstanceSessionId", rowId, sessionId, length);
    return State().updateResult;
  }
  void ReportMessageCollect(std::shared_ptr<pass_interface::MessageCollect> message) override {
    const auto status = StatusOf(*message);
    {
      const std::lock_guard lock(StateMutex());
      State().messages.push_back(message);
    }
    Record("collect.Report", message->collectType, message->collectStatus, status.errorCode, status.detailText,
           status.extraText);
  }
};

struct FakePass final : pass_interface::IPassInterface {
  std::int32_t Initialise(const char* baseUrl, const char* credential1, const char* credential2,
                          const char* credential3, const char* version,
                          std::shared_ptr<pass_interface::IPassInterfaceNotic> notic, void* reserved,
                          std::uint32_t httpValue1, std::uint32_t httpValue2, bool enabled) override {
    {
      const std::lock_guard lock(StateMutex());
      State().passSink = notic;
    }
    Record("pass.Initialise", baseUrl, credential1, credential2, credential3, version, notic ? "sink" : "no sink",
           reserved ? "reserved" : "null", httpValue1, httpValue2, enabled);
    return State().passInitialiseResult;
  }
  void Stop() override { Record("pass.Stop"); }
  RESERVED(3)
  std::int32_t RequestPhoneConnect(const char* targetId, const char* text1, const char* text2,
                                   void* reserved) override {
    Record("pass.RequestPhoneConnect", targetId, text1, text2, reserved ? "reserved" : "null");
    return State().requestResult;
  }
  std::int32_t RequestRefreshSession(const char* sessionId, const char* text, std::int32_t value) override {
    Record("pass.RequestRefreshSession", sessionId, text, value);
    return State().requestResult;
  }
};

struct FakeDatabase final : database_interface::IDatabaseInterface {
  RESERVED_4(1, 2, 3, 4)
  RESERVED_4(5, 6, 7, 8)
  RESERVED_4(9, 10, 11, 12)
  RESERVED_4(13, 14, 15, 16)
  std::int32_t SaveSessionCache(const char* cacheKey, const char* cipherText, std::int64_t expiry) override {
    Record("db.SaveSessionCache", expiry);
    const std::lock_guard lock(StateMutex());
    State().sessionCache[cacheKey] = SessionRow{cipherText, expiry};
    return 0;
  }
  std::int32_t LoadSessionCache(const char* cacheKey, std::int64_t minimumExpiry, std::string& cipherText) override {
    Record("db.LoadSessionCache");
    const std::lock_guard lock(StateMutex());
    State().minimumExpiry = minimumExpiry;
    const auto row = State().sessionCache.find(cacheKey);
    if (row == State().sessionCache.end() || row->second.expiry <= minimumExpiry) return 0;
    cipherText = row->second.cipherText;
    return 1;
  }
};

void NoteCipherCall(const unsigned char* input, int length, const unsigned char* key, const unsigned char* iv) {
  const std::lock_guard lock(StateMutex());
  State().cipherCalls.push_back({{key, key + 32}, {iv, iv + 16}, std::string(input, input + length)});
}

unsigned char Checksum(const std::vector<unsigned char>& bytes) {
  return static_cast<unsigned char>('a' + std::accumulate(bytes.begin(), bytes.end(), 7U) % 26);
}

using Value = std::uint64_t;

template <class... Arguments>
std::int32_t Command(const char* operation, const Arguments&... arguments) {
  Record(operation, arguments...);
  return State().commandResult;
}

struct FakeConnection final : ws_interface::IWSInterface {
  explicit FakeConnection(std::size_t index) : index(index) {}

  std::int32_t SetSessionId(const char* sessionId) override { return Command("ws.SetSessionId", sessionId); }
  std::int32_t SendReq2(Value a, Value b) override { return Command("ws.SendReq2", a, b); }
  std::int32_t SendReq3(Value a, Value b, Value c, std::int32_t count) override {
    return Command("ws.SendReq3", a, b, c, count);
  }
  std::int32_t SendReq4(float a, float b, float c, float d, float e, float f, float g, float h) override {
    return Command("ws.SendReq4", a, b, c, d, e, f, g, h);
  }
  std::int32_t SendReq5(std::int32_t a, float b, float c, float d) override {
    return Command("ws.SendReq5", a, b, c, d);
  }
  std::int32_t SendReq6(const char* a, const char* b) override { return Command("ws.SendReq6", a, b); }
  std::int32_t SendReq7(const char* text) override { return Command("ws.SendReq7", text); }
  std::int32_t SendReq8(const char* text) override { return Command("ws.SendReq8", text); }
  std::int32_t SendReq9(const char* text, std::int32_t value) override { return Command("ws.SendReq9", text, value); }
  std::int32_t SendReq10(Value a, Value b) override { return Command("ws.SendReq10", a, b); }
  std::int32_t SendReq11(Value a, Value b, Value c, std::int32_t d) override {
    return Command("ws.SendReq11", a, b, c, d);
  }
  std::int32_t SendMicParamReq(std::int32_t a, std::int32_t b, std::int32_t c) override {
    return Command("ws.SendMicParamReq", a, b, c);
  }
  std::int32_t SendReq13(Value a, Value b) override { return Command("ws.SendReq13", a, b); }
  std::int32_t SendCameraParamReq(std::int32_t a, std::int32_t b, std::int32_t c, Value d, std::int32_t e) override {
    return Command("ws.SendCameraParamReq", a, b, c, d, e);
  }
  std::int32_t SendReq15(Value a, Value b) override { return Command("ws.SendReq15", a, b); }
  std::int32_t SendReq16(Value a, Value b) override { return Command("ws.SendReq16", a, b); }
  std::int32_t SendReq17(std::int32_t value) override { return Command("ws.SendReq17", value); }
  std::int32_t SendDummyReq() override { return Command("ws.SendDummyReq"); }

  const std::size_t index;
};

struct FakeManager final : ws_interface::IWSManagerInterface {
  std::int32_t Initialise(std::int32_t value, std::uint32_t wsManagerValue) override {
    Record("wsManager.Initialise", value, wsManagerValue);
    return State().wsInitialiseResult;
  }
  std::shared_ptr<ws_interface::IWSInterface> CreateWS(const char* credential1, const char* url,
                                                       const ws_interface::WSConnectInfo* connectInfo,
                                                       const ws_interface::WSVideoInfo* videoInfo,
                                                       const ws_interface::WSDefaultParam* defaultParam,
                                                       const ws_interface::WSSystemParam* systemParam,
                                                       std::shared_ptr<ws_interface::IWSInterfaceNotic> notic,
                                                       std::uint64_t reserved) override {
    Record("wsManager.CreateWS", url);
    if (State().createWsFails) return nullptr;
    const std::lock_guard lock(StateMutex());
    State().connections.push_back(
        {credential1, url, *connectInfo, *videoInfo, *defaultParam, *systemParam, reserved, notic});
    return std::make_shared<FakeConnection>(State().connections.size());
  }
  void DestroyWS(std::shared_ptr<ws_interface::IWSInterface> connection) override {
    const std::size_t index = connection ? static_cast<const FakeConnection&>(*connection).index : 0;
    if (index > 0) {
      const std::lock_guard lock(StateMutex());
      ++State().connections[index - 1].timesDestroyed;
    }
    Record("wsManager.DestroyWS", index);
  }
  RESERVED(4)
  void Stop() override { Record("wsManager.Stop"); }
};

}  // namespace

int Services::LiveConnections() const {
  int live = 0;
  for (const CreatedConnection& connection : connections) live += connection.timesDestroyed == 1 ? 0 : 1;
  return live;
}

Services& State() {
  static auto* const state = new Services;
  return *state;
}

std::mutex& StateMutex() {
  static auto* const mutex = new std::mutex;
  return *mutex;
}

void ResetServices() {
  const std::lock_guard lock(StateMutex());
  State() = Services();
}

pass_interface::MessageCollectStatusData StatusOf(const pass_interface::MessageCollect& message) {
  const auto* const status = dynamic_cast<const pass_interface::MessageCollectStatusData*>(message.data.get());
  return status ? *status : pass_interface::MessageCollectStatusData();
}

}  // namespace fakes

std::shared_ptr<base::IBaseLogInterface> base::IBaseLogInterface::GetLogInstance() {
  static auto* const log = new std::shared_ptr<IBaseLogInterface>(std::make_shared<fakes::FakeLog>());
  return *log;
}

long base::GetTid() {
  return static_cast<long>(std::hash<std::thread::id>()(std::this_thread::get_id()) % 1000003);
}

void base::IMiniJump::GenerateMiniDump(const char* dumpDirectory, std::function<void(const char*)> onDump) {
  using Plain = void (*)(const char*);
  const Plain* const plain = onDump.target<Plain>();
  const bool isCoreHappen = plain && *plain == &collect_interface::ICollectInterface::CoreHappen;
  fakes::Record("dump.GenerateMiniDump", dumpDirectory, isCoreHappen ? "CoreHappen" : "another callback");
}

std::shared_ptr<collect_interface::ICollectInterface> collect_interface::ICollectInterface::GetCollectInstance(
    bool flag) {
  if (flag) fakes::Record("collect.GetCollectInstance(true)");
  static auto* const collector = new std::shared_ptr<ICollectInterface>(std::make_shared<fakes::FakeCollector>());
  return fakes::State().collectorMissing ? nullptr : *collector;
}

void collect_interface::ICollectInterface::CoreHappen(const char* text) {
  fakes::Record("collect.CoreHappen", text);
}

std::shared_ptr<pass_interface::IPassInterface> pass_interface::IPassInterface::Create() {
  fakes::Record("pass.Create");
  return std::make_shared<fakes::FakePass>();
}

// No cipher, but it goes back and forth and notices a changed byte.
int pass_interface::IEncryption::Aes256Encrypt(const unsigned char* input, int length, const unsigned char* key,
                                               const unsigned char* iv, std::vector<unsigned char>& output) {
  fakes::Recorder::Get().Add("cipher.Encrypt");
  fakes::NoteCipherCall(input, length, key, iv);
  output.assign(input, input + length);
  output.push_back(fakes::Checksum(output));
  std::reverse(output.begin(), output.end());
  return fakes::State().encryptFails ? -1 : 0;
}

int pass_interface::IEncryption::Aes256Decrypt(const unsigned char* input, int length, const unsigned char* key,
                                               const unsigned char* iv, std::vector<unsigned char>& output) {
  fakes::Recorder::Get().Add("cipher.Decrypt");
  fakes::NoteCipherCall(input, length, key, iv);
  if (fakes::State().decryptFails || length == 0) return -1;
  output.assign(input + 1, input + length);
  std::reverse(output.begin(), output.end());
  return fakes::Checksum(output) == input[0] ? 0 : -1;
}

std::string pass_interface::IEncryption::Base64Encode(const char* bytes, int length, bool flag) {
  return (flag ? "flag set:" : "base64:") + std::string(bytes, bytes + length);
}

std::string pass_interface::IEncryption::Base64Decode(const char* text, int length, bool flag) {
  const std::string whole(text, text + length);
  return whole.rfind("base64:", 0) == 0 && !flag ? whole.substr(7) : "";
}

std::shared_ptr<database_interface::IDatabaseInterface> database_interface::IDatabaseInterface::GetDbInstance() {
  static auto* const database = new std::shared_ptr<IDatabaseInterface>(std::make_shared<fakes::FakeDatabase>());
  return *database;
}

std::shared_ptr<ws_interface::IWSManagerInterface> ws_interface::IWSManagerInterface::Create() {
  fakes::Record("wsManager.Create");
  return std::make_shared<fakes::FakeManager>();
}
