// A host that loads the library, connects and frees it, again and again.
#include <gtest/gtest.h>

#include <iostream>

#include "base/base_log_interface.h"
#include "qv_data_interface/qv_data_interface.h"
#include "reference/common/service_threads.h"
#include "reference/common/settings.h"
#include "tests/binary_interface/loaded_library.h"
#include "tests/support/front_end.h"
#include "tests/support/temporary_directory.h"
#include "tools/qv_cloud/cloud.h"

namespace {

using qv_data_interface::IQVDataInterface;
using tests::kPatience;

constexpr int kFirstRounds = 20;
constexpr int kRounds = 100;
// What the system keeps for its own, and the pages that SQLite keeps of a collector that grows by a row a round. One
// handle, or one connection's objects, left behind each round is more.
constexpr std::size_t kHandleTolerance = (kRounds - kFirstRounds) / 4;
constexpr std::size_t kMemoryTolerance = (kRounds - kFirstRounds) * std::size_t{4096};

void LoadConnectAndFree(const std::string& baseUrl) {
  const tests::LoadedLibrary library(LIBRARY_FILE);
  const auto create =
      library.Find<std::shared_ptr<IQVDataInterface>()>("_ZN17qv_data_interface16IQVDataInterface6CreateEv");
  const std::shared_ptr<IQVDataInterface> controller = create();
  const auto frontEnd = std::make_shared<tests::ListeningFrontEnd>();
  qv_data_interface::QvVideoParam video;
  qv_data_interface::QvDataSystemParam system;
  ASSERT_EQ(controller->Init("user", "device", "token", "phone", 0, frontEnd, &video, &system, 0, baseUrl.c_str()), 0);
  ASSERT_EQ(controller->GetPhoneConnect(), 0);
  ASSERT_TRUE(frontEnd->notices.WaitFor(tests::kFirstFrame));
  controller->ReleasePhoneConnect();
}

TEST(LoadAndFree, NothingGrowsWithTheRounds) {
  const tests::TemporaryDirectory directory;
  const qv_cloud::Cloud cloud{qv_cloud::CloudOptions{}};
  reference::SetDataDirectory(directory.path);
  reference::SetAuthorityFile(cloud.AuthorityFile());
  // No line waits for the start of a log that does not come.
  base::IBaseLogInterface::GetLogInstance()->SetLogLevel(100);
  tests::ProcessFigures first{};
  for (int round = 1; round <= kRounds; ++round) {
    SCOPED_TRACE(round);
    ASSERT_NO_FATAL_FAILURE(LoadConnectAndFree(cloud.BaseUrl()));
    ASSERT_TRUE(reference::WaitForServiceThreads(kPatience));
    // The cloud's side of the connection closes a moment later; its files are not the host's.
    ASSERT_TRUE(cloud.WaitUntil(
        [](const qv_cloud::CloudStats& stats) {
          return std::all_of(stats.lines.begin(), stats.lines.end(),
                             [](const auto& line) { return line.second.now == 0; });
        },
        kPatience));
    if (round == kFirstRounds) first = tests::CurrentFigures();
  }
  const tests::ProcessFigures last = tests::CurrentFigures();
  ASSERT_TRUE(first.threads > 0 && first.handles > 0);
  EXPECT_LE(last.threads, first.threads);
  EXPECT_LE(last.handles, first.handles + kHandleTolerance);
  EXPECT_LE(last.memory, first.memory + kMemoryTolerance);
  std::cout << "after " << kFirstRounds << " and " << kRounds << " rounds: threads " << first.threads << ", "
            << last.threads << "; handles " << first.handles << ", " << last.handles << "; bytes " << first.memory
            << ", " << last.memory << '\n';
}

}  // namespace
