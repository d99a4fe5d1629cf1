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
#include "tests/support/uncounted.h"
#include "ws_interface/ws_manager_interface.h"

namespace fakes {
namespace {

using namespace ws_interface;
using pass_interface::IPassInterfaceNotic;
using tests::Line;
using tests::Uncounted;
using I32 = std::int32_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;
using Text = const char*;

template <class Work>
auto Locked(Work&& work) {
  const Uncounted own;
  const std::lock_guard<std::mutex> lock(StateMutex());
  return work(State());
}

// Records the call and gives the answer.
template <class... Arguments>
int Told(int answer, Text operation, const Arguments&... arguments) {
  Record(operation, arguments...);
  return answer;
}

void NoteStop(Text operation) {
  Locked([](Services& state) { ++state.stopped; });
  Record(operation);
}

#define RESERVED(number) \
  void Reserved##number() override {}
#define RESERVED_4(a, b, c, d) RESERVED(a) RESERVED(b) RESERVED(c) RESERVED(d)
#define RESERVED_8(a, b, c, d, e, f, g, h) RESERVED_4(a, b, c, d) RESERVED_4(e, f, g, h)

struct FakeLog final : base::IBaseLogInterface {
  void SetLogPath(Text directory) override { Record("log.SetLogPath", directory); }
  void SetLogName(Text name) override { Record("log.SetLogName", name); }
  void SetLogSizeSetting(const int& value) override { Record("log.SetLogSizeSetting", value); }
  void SetLogLevel(const int& value) override { Record("log.SetLogLevel", value); }
  RESERVED(5)
  void SetLogModeSetting(const int& value) override { Record("log.SetLogModeSetting", value); }
  void SetLogCountSetting(const int& value) override { Record("log.SetLogCountSetting", value); }
  RESERVED(8)
  RESERVED(9)
  void WriteLog(const int& level, const long& threadId, const char* format, ...) override SDK_PRINTF_FORMAT(4, 5) {
    const Uncounted own;
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
  void SetCollectSdkType(Text sdkType) override { Record("collect.SetCollectSdkType", sdkType); }
  int DeleteInstanceInfo(int rowId) override {
    Locked([&](Services& state) { state.liveRows.erase(rowId); });
    return Told(State().deleteResult, "collect.DeleteInstanceInfo", rowId);
  }
  int InsertInstanceInfo(int* rowId, Text targetId, Text sessionId, int defaultMode, Text channel) override {
    Record("collect.InsertInstanceInfo", targetId, sessionId, defaultMode, channel);
    return Locked([&](Services& state) {
      if (state.insertResult == 0) state.liveRows.insert(*rowId = state.nextRow++);
      return state.insertResult;
    });
  }
  int UpdataInstanceSessionId(int rowId, Text sessionId, int length) override {
    return Told(State().updateResult, "collect.UpdataInstanceSessionId", rowId, sessionId, length);
  }
  void ReportMessageCollect(std::shared_ptr<pass_interface::MessageCollect> message) override {
    const Uncounted own;
    const auto status = StatusOf(*message);
    Locked([&](Services& state) { state.messages.push_back(message); });
    Record("collect.Report", message->collectType, message->collectStatus, status.errorCode, status.detailText,
           status.extraText);
  }
};

struct FakePass final : pass_interface::IPassInterface {
  I32 Initialise(Text baseUrl, Text credential1, Text credential2, Text credential3, Text version,
                 std::shared_ptr<IPassInterfaceNotic> notic, void* reserved, U32 httpValue1, U32 httpValue2,
                 bool enabled) override {
    Locked([&](Services& state) { state.passSink = notic; });
    return Told(State().passInitialiseResult, "pass.Initialise", baseUrl, credential1, credential2, credential3,
                version, notic ? "sink" : "no sink", reserved ? "reserved" : "null", httpValue1, httpValue2, enabled);
  }
  void Stop() override { NoteStop("pass.Stop"); }
  RESERVED(3)
  I32 RequestPhoneConnect(Text targetId, Text text1, Text text2, void* reserved) override {
    return Told(State().requestResult, "pass.RequestPhoneConnect", targetId, text1, text2,
                reserved ? "reserved" : "null");
  }
  I32 RequestRefreshSession(Text sessionId, Text text, I32 value) override {
    return Told(State().requestResult, "pass.RequestRefreshSession", sessionId, text, value);
  }
};

struct FakeDatabase final : database_interface::IDatabaseInterface {
  RESERVED_8(1, 2, 3, 4, 5, 6, 7, 8)
  RESERVED_8(9, 10, 11, 12, 13, 14, 15, 16)
  I32 SaveSessionCache(Text cacheKey, Text cipherText, std::int64_t expiry) override {
    Record("db.SaveSessionCache", expiry);
    return Locked([&](Services& state) {
      if (state.saveResult == 0) state.sessionCache[cacheKey] = SessionRow{cipherText, expiry};
      return state.saveResult;
    });
  }
  I32 LoadSessionCache(Text cacheKey, std::int64_t minimumExpiry, std::string& cipherText) override {
    Record("db.LoadSessionCache");
    return Locked([&](Services& state) {
      state.minimumExpiry = minimumExpiry;
      const auto row = state.sessionCache.find(cacheKey);
      if (state.loadFailure != 0 || row == state.sessionCache.end()) return state.loadFailure;
      if (row->second.expiry <= minimumExpiry) return 0;
      cipherText = row->second.cipherText;
      if (state.rowsAreSpoilt != 0) cipherText.back() ^= 1;
      return 1;
    });
  }
};

void NoteCipherCall(Text name, const unsigned char* input, int length, const unsigned char* key,
                    const unsigned char* iv) {
  Recorder::Get().Add(name);
  Locked([&](Services& state) {
    state.cipherCalls.push_back({{key, key + 32}, {iv, iv + 16}, std::string(input, input + length)});
  });
}

unsigned char Checksum(const std::vector<unsigned char>& bytes) {
  return static_cast<unsigned char>('a' + std::accumulate(bytes.begin(), bytes.end(), 7U) % 26);
}

template <class... Arguments>
I32 Send(Text operation, const Arguments&... arguments) {
  return Told(State().commandResult, operation, arguments...);
}

struct FakeConnection final : IWSInterface {
  explicit FakeConnection(std::size_t index) : index(index) {}

  I32 SetSessionId(Text sessionId) override { return Send("ws.SetSessionId", sessionId); }
  I32 SendReq2(U64 a, U64 b) override { return Send("ws.SendReq2", a, b); }
  I32 SendReq3(U64 a, U64 b, U64 c, I32 count) override { return Send("ws.SendReq3", a, b, c, count); }
  I32 SendReq4(float a, float b, float c, float d, float e, float f, float g, float h) override {
    return Send("ws.SendReq4", a, b, c, d, e, f, g, h);
  }
  I32 SendReq5(I32 a, float b, float c, float d) override { return Send("ws.SendReq5", a, b, c, d); }
  I32 SendReq6(Text a, Text b) override { return Send("ws.SendReq6", a, b); }
  I32 SendReq7(Text text) override { return Send("ws.SendReq7", text); }
  I32 SendReq8(Text text) override { return Send("ws.SendReq8", text); }
  I32 SendReq9(Text text, I32 value) override { return Send("ws.SendReq9", text, value); }
  I32 SendReq10(U64 a, U64 b) override { return Send("ws.SendReq10", a, b); }
  I32 SendReq11(U64 a, U64 b, U64 c, I32 d) override { return Send("ws.SendReq11", a, b, c, d); }
  I32 SendMicParamReq(I32 a, I32 b, I32 c) override { return Send("ws.SendMicParamReq", a, b, c); }
  I32 SendReq13(U64 a, U64 b) override { return Send("ws.SendReq13", a, b); }
  I32 SendCameraParamReq(I32 a, I32 b, I32 c, U64 d, I32 e) override {
    return Send("ws.SendCameraParamReq", a, b, c, d, e);
  }
  I32 SendReq15(U64 a, U64 b) override { return Send("ws.SendReq15", a, b); }
  I32 SendReq16(U64 a, U64 b) override { return Send("ws.SendReq16", a, b); }
  I32 SendReq17(I32 value) override { return Send("ws.SendReq17", value); }
  I32 SendDummyReq() override { return Send("ws.SendDummyReq"); }

  const std::size_t index;
};

// A field in its whole length, but for the NULs at its end.
std::string Whole(const char (&field)[256]) {
  const std::string text(field, sizeof field);
  return text.substr(0, text.find_last_not_of('\0') + 1);
}

std::string Written(Text credential1, const WSConnectInfo& info, const WSVideoInfo& video, const WSDefaultParam& fixed,
                    const WSSystemParam& system, U64 reserved) {
  const auto& [format, width, height, frameRate, bitRate] = video.videoParam;
  return Line(credential1, reserved) + " " +
         Line("connect", Whole(info.sessionIdText), Whole(info.identityText), Whole(info.versionText), info.clientKind,
              info.initNumber, Whole(info.auxText), info.streamKind, info.reserved) +
         " " + Line("video", format, width, height, frameRate, bitRate, Whole(video.text1), Whole(video.text2)) + " " +
         Line("fixed", +fixed.value1, fixed.value2, +fixed.value3, +fixed.value4) + " " +
         Line("system", +system.wsOptionEnabled, system.wsOptionInterval, +system.useWss, +system.value4);
}

struct FakeManager final : IWSManagerInterface {
  I32 Initialise(I32 value, U32 wsManagerValue) override {
    return Told(State().wsInitialiseResult, "wsManager.Initialise", value, wsManagerValue);
  }
  std::shared_ptr<IWSInterface> CreateWS(Text credential1, Text url, const WSConnectInfo* connectInfo,
                                         const WSVideoInfo* videoInfo, const WSDefaultParam* defaultParam,
                                         const WSSystemParam* systemParam, std::shared_ptr<IWSInterfaceNotic> notic,
                                         U64 reserved) override {
    const Uncounted own;
    Record("wsManager.CreateWS", url);
    if (Locked([](Services& state) { return state.createWsFails; })) return nullptr;
    const std::string records = Written(credential1, *connectInfo, *videoInfo, *defaultParam, *systemParam, reserved);
    return Locked([&](Services& state) {
      const auto made = std::make_shared<FakeConnection>(state.connections.size() + 1);
      state.connections.push_back({url, records, notic, made});
      return made;
    });
  }
  void DestroyWS(std::shared_ptr<IWSInterface> connection) override {
    const std::size_t index = connection ? static_cast<const FakeConnection&>(*connection).index : 0;
    if (index > 0) Locked([&](Services& state) { ++state.connections[index - 1].timesDestroyed; });
    Record("wsManager.DestroyWS", index);
  }
  RESERVED(4)
  void Stop() override { NoteStop("wsManager.Stop"); }
};

// Lives for ever, since the library calls out before main and after it.
template <class Fake>
std::shared_ptr<Fake> TheOne() {
  const Uncounted own;
  static auto* const one = new std::shared_ptr<Fake>(std::make_shared<Fake>());
  return *one;
}

template <class Fake>
std::shared_ptr<Fake> Make(int isMissing) {
  if (isMissing != 0) return nullptr;
  auto made = std::make_shared<Fake>();
  Locked([&](Services& state) { state.made.push_back(made); });
  return made;
}

}  // namespace

int Services::LiveConnections() const {
  return static_cast<int>(std::count_if(connections.begin(), connections.end(),
                                        [](const CreatedConnection& each) { return each.timesDestroyed != 1; }));
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
  Locked([](Services& state) { state = Services(); });
}

pass_interface::MessageCollectStatusData StatusOf(const pass_interface::MessageCollect& message) {
  const auto* const status = dynamic_cast<const pass_interface::MessageCollectStatusData*>(message.data.get());
  return status ? *status : pass_interface::MessageCollectStatusData();
}

}  // namespace fakes

std::shared_ptr<base::IBaseLogInterface> base::IBaseLogInterface::GetLogInstance() {
  fakes::Recorder::Get().Visit("log.GetLogInstance");
  return fakes::TheOne<fakes::FakeLog>();
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
  fakes::Recorder::Get().Visit("collect.GetCollectInstance");
  if (flag) fakes::Record("collect.GetCollectInstance(true)");
  return fakes::State().collectorMissing ? nullptr : fakes::TheOne<fakes::FakeCollector>();
}

void collect_interface::ICollectInterface::CoreHappen(const char* text) {
  fakes::Record("collect.CoreHappen", text);
}

std::shared_ptr<pass_interface::IPassInterface> pass_interface::IPassInterface::Create() {
  const tests::Uncounted own;
  fakes::Record("pass.Create");
  return fakes::Make<fakes::FakePass>(fakes::State().passMissing);
}

// No cipher, but it goes back and forth and notices a changed byte.
int pass_interface::IEncryption::Aes256Encrypt(const unsigned char* input, int length, const unsigned char* key,
                                               const unsigned char* iv, std::vector<unsigned char>& output) {
  const tests::Uncounted own;
  fakes::NoteCipherCall("cipher.Encrypt", input, length, key, iv);
  output.assign(input, input + length);
  output.push_back(fakes::Checksum(output));
  std::reverse(output.begin(), output.end());
  return fakes::State().encryptFails ? -1 : 0;
}

int pass_interface::IEncryption::Aes256Decrypt(const unsigned char* input, int length, const unsigned char* key,
                                               const unsigned char* iv, std::vector<unsigned char>& output) {
  const tests::Uncounted own;
  fakes::NoteCipherCall("cipher.Decrypt", input, length, key, iv);
  if (length == 0) return -1;
  output.assign(input + 1, input + length);
  std::reverse(output.begin(), output.end());
  return fakes::Checksum(output) == input[0] ? 0 : -1;
}

std::string pass_interface::IEncryption::Base64Encode(const char* bytes, int length, bool flag) {
  const tests::Uncounted own;
  fakes::Recorder::Get().Visit("cipher.Base64Encode");
  return (flag ? "flag set:" : "base64:") + std::string(bytes, bytes + length);
}

std::string pass_interface::IEncryption::Base64Decode(const char* text, int length, bool flag) {
  const tests::Uncounted own;
  fakes::Recorder::Get().Visit("cipher.Base64Decode");
  const std::string whole(text, text + length);
  return whole.rfind("base64:", 0) == 0 && !flag ? whole.substr(7) : "";
}

std::shared_ptr<database_interface::IDatabaseInterface> database_interface::IDatabaseInterface::GetDbInstance() {
  fakes::Recorder::Get().Visit("db.GetDbInstance");
  return fakes::State().databaseMissing ? nullptr : fakes::TheOne<fakes::FakeDatabase>();
}

std::shared_ptr<ws_interface::IWSManagerInterface> ws_interface::IWSManagerInterface::Create() {
  const tests::Uncounted own;
  fakes::Record("wsManager.Create");
  return fakes::Make<fakes::FakeManager>(fakes::State().wsManagerMissing);
}
