// What the end-to-end tests share: a front end that records what it is told, and a fixture that joins the shipped
// library, the reference services on real disks and sockets, and the loopback cloud.
//
// Threads: FrontEnd from any; the fixture belongs to the test's thread. Ownership: the data directory and
// the log directory go with the fixture and the process.
#ifndef TESTS_END_TO_END_END_TO_END_H
#define TESTS_END_TO_END_END_TO_END_H

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "qv_data_interface/qv_data_interface.h"
#include "tests/end_to_end/secret_search.h"
#include "tests/support/front_end.h"
#include "tests/support/sql.h"
#include "tests/support/temporary_directory.h"
#include "tools/qv_cloud/cloud.h"

namespace end_to_end {

using tests::kConnecting;
using tests::kDisconnected;
using tests::kFirstFrame;
using tests::kPatience;
using tests::kStands;
using tests::ReadFile;

using Texts = std::vector<std::string>;

// The reaction is called with each notice after it was recorded, on the thread of the notice.
struct FrontEnd final : tests::ListeningFrontEnd {
  using Reaction = std::function<void(const std::string& notice)>;
  explicit FrontEnd(Reaction reaction = {}) { notices.inside = std::move(reaction); }

  // The reported states in order: C an attempt begins, S the connection stands, D it is lost.
  std::string States() const;
  // Without the time, which is the cloud's.
  void OnFirstFrame(U64 sequence, U64, U64 size, U32 format) override {
    tests::FrontEnd::OnFirstFrame(sequence, 0, size, format);
  }
};

class EndToEnd : public testing::Test {
 public:
  ~EndToEnd() override;

 protected:
  static void SetUpTestSuite();
  EndToEnd();

  // A new cloud in place of an earlier one; the services trust its authority.
  void StartCloud(qv_cloud::CloudOptions options = {});
  void StartCloud(const qv_cloud::Faults& faults);
  // Init with a new front end; then GetPhoneConnect; then the wait for a first frame. Each fails the test when it
  // fails.
  void Init(FrontEnd::Reaction reaction = {});
  void Connect(FrontEnd::Reaction reaction = {});
  [[nodiscard]] bool ConnectToFirstFrame();
  // Releases and says whether that took less than half a second; then no notice may be under way.
  [[nodiscard]] bool ReleaseIsPrompt() { return ReleaseIsPrompt(*controller); }
  [[nodiscard]] static bool ReleaseIsPrompt(qv_data_interface::IQVDataInterface& controller);

  [[nodiscard]] bool CloudSees(const std::function<bool(const qv_cloud::CloudStats&)>& condition) const;
  // Says whether that many signalling connections, and no others, stand at the cloud.
  [[nodiscard]] bool CloudHasConnections(std::uint64_t count) const;
  qv_cloud::CloudStats Stats() const { return cloud->Stats(); }

  // The lines written since the test began.
  std::string Log() const;
  // Of a database in the data directory.
  Texts Sql(const char* file, const std::string& statements) const { return tests::Sql(directory / file, statements); }

  const tests::TemporaryDirectory home;
  const std::filesystem::path& directory = home.path;
  // The credentials, and what the cloud's sessions begin with, are found wherever they do not belong.
  std::string credential1 = "marker/of+credential-1", credential2 = "marker/of+credential-2",
              credential3 = "marker/of+credential-3", targetId = "phone-1";
  const SecretSearch search;
  qv_data_interface::QvVideoParam video;
  qv_data_interface::QvDataSystemParam system;
  static constexpr std::int32_t kReconnectNumber = 7;

  tests::NoticeRecord cloudEvents;
  std::optional<qv_cloud::Cloud> cloud;
  std::shared_ptr<FrontEnd> frontEnd;
  std::shared_ptr<qv_data_interface::IQVDataInterface> controller;

 private:
  std::uintmax_t logBegin = 0;
};

// Nothing but this goes wrong.
template <class Member>
qv_cloud::Faults With(Member qv_cloud::Faults::*member, std::type_identity_t<Member> value) {
  qv_cloud::Faults faults;
  faults.*member = value;
  return faults;
}

std::filesystem::path LogDirectory();

}  // namespace end_to_end

#endif
