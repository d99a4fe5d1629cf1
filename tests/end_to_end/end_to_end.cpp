#include "tests/end_to_end/end_to_end.h"

#include <iostream>

#include "reference/common/service_threads.h"
#include "reference/common/settings.h"
#include "session/session_cipher.h"

namespace end_to_end {
namespace {

struct LogHome : tests::TemporaryDirectory {
  LogHome() {
    qv_data_interface::QvLogParam param;
    param.level = 0;
    const std::string text = path.string();
    if (text.size() >= sizeof(param.path)) throw std::length_error("the temporary directory's name is too long");
    param.path[text.copy(param.path, text.size())] = '\0';
    // One file for the whole run, so that the lines of a test stand behind those of the test before it.
    param.sizeSetting = 1024 * 1024;
    qv_data_interface::IQVDataInterface::SetLogParam(&param);
  }
};

constexpr char kSessionMarker[] = "marker/of+session-";

// The keys as they are, and the constants that they are made from.
Texts Keys() {
  std::vector<unsigned char> key, iv;
  qv_data_interface::PrepareCacheKeyMaterial(key, iv);
  Texts keys;
  for (const auto& bytes : {key, iv}) {
    keys.emplace_back(bytes.begin(), bytes.end());
    std::string& material = keys.emplace_back(keys.back());
    for (std::size_t i = 0; i < material.size(); ++i) material[i] = static_cast<char>(bytes[i] ^ (i % 2 ? 0xA5 : 0x5A));
  }
  return keys;
}

Texts And(Texts list, const Texts& more) {
  list.insert(list.end(), more.begin(), more.end());
  return list;
}

std::filesystem::path LogFile() {
  return LogDirectory() / "QV_DATA.log";
}

}  // namespace

std::string FrontEnd::States() const {
  std::string states;
  for (const std::string& notice : notices.Lines()) {
    if (notice.starts_with(kConnecting)) states += 'C';
    if (notice.starts_with(kStands)) states += 'S';
    if (notice.starts_with(kDisconnected)) states += 'D';
  }
  return states;
}

std::filesystem::path LogDirectory() {
  static const LogHome home;
  return home.path;
}

void EndToEnd::SetUpTestSuite() {
  LogDirectory();
}

EndToEnd::EndToEnd()
    : search(And(Keys(), {credential1, credential2, credential3, kSessionMarker})),
      controller(qv_data_interface::IQVDataInterface::Create()),
      logBegin(std::filesystem::file_size(LogFile())) {
  reference::SetDataDirectory(directory);
}

EndToEnd::~EndToEnd() {
  controller.reset();
  frontEnd.reset();
  // A release from inside a notice leaves the notice's thread to end by itself; it must not write to the next test's
  // directory, nor run while the process ends.
  EXPECT_TRUE(reference::WaitForServiceThreads(kPatience)) << "a service's thread does not end after its release";
  cloud.reset();
  EXPECT_EQ(And(search.InFiles(directory), search.InFiles(LogDirectory())), Texts{}) << "a secret has leaked";
  if (HasFailure()) std::cout << "The log of this test:\n" << Log();
}

void EndToEnd::StartCloud(qv_cloud::CloudOptions options) {
  options.sessionPrefix = kSessionMarker;
  options.onEvent = [this](const std::string& line) { cloudEvents.Add(line); };
  cloud.emplace(std::move(options));
  reference::SetAuthorityFile(cloud->AuthorityFile());
}

void EndToEnd::StartCloud(const qv_cloud::Faults& faults) {
  qv_cloud::CloudOptions options;
  options.faults = faults;
  StartCloud(options);
}

void EndToEnd::Init(FrontEnd::Reaction reaction) {
  frontEnd = std::make_shared<FrontEnd>(std::move(reaction));
  EXPECT_EQ(controller->Init(credential1.c_str(), credential2.c_str(), credential3.c_str(), targetId.c_str(), 0,
                             frontEnd, &video, &system, kReconnectNumber, cloud->BaseUrl().c_str()),
            0);
}

void EndToEnd::Connect(FrontEnd::Reaction reaction) {
  Init(std::move(reaction));
  EXPECT_EQ(controller->GetPhoneConnect(), 0);
}

bool EndToEnd::ConnectToFirstFrame() {
  Connect();
  return frontEnd->notices.WaitFor(kFirstFrame);
}

bool EndToEnd::ReleaseIsPrompt(qv_data_interface::IQVDataInterface& controller) {
  const auto begin = std::chrono::steady_clock::now();
  controller.ReleasePhoneConnect();
  return std::chrono::steady_clock::now() - begin < std::chrono::milliseconds(500);
}

bool EndToEnd::CloudSees(const std::function<bool(const qv_cloud::CloudStats&)>& condition) const {
  return cloud->WaitUntil(condition, kPatience);
}

bool EndToEnd::CloudHasConnections(std::uint64_t count) const {
  return CloudSees([count](const qv_cloud::CloudStats& stats) {
    std::uint64_t now = 0;
    for (const auto& [line, lineStats] : stats.lines) now += lineStats.now;
    return now == count;
  });
}

std::string EndToEnd::Log() const {
  return ReadFile(LogFile()).substr(logBegin);
}

}  // namespace end_to_end
