// Every allocation of every story of a connection's life fails, on recorded fakes: once, or with all after it.
#include <iostream>

#include "session/instance_info_codec.h"
#include "session/session_cipher.h"
#include "tests/allocation/failing_allocations.h"
#include "tests/library/sweep/story.h"

namespace sweep {
namespace {

using allocation::Do;
using allocation::Mode;
using tests::Counted;
using tests::Uncounted;

struct AllocationSweep : StoryTest, testing::WithParamInterface<std::tuple<Mode, bool>> {
  // Texts arrive whole or not at all: no part of a URL, of a session, or of a row for the cache.
  static void ExpectWholeTexts() {
    for (const auto& connection : Services().connections) {
      EXPECT_THAT(connection.url, testing::AnyOf("wss://default.cloud.example:8443", "wss://line-1.cloud.example:81",
                                                 "wss://line-2.cloud.example:82"));
      EXPECT_THAT(connection.records, testing::HasSubstr("(a-long-session-"));
    }
    for (const auto& [key, row] : Services().sessionCache) {
      const auto& cipher = row.cipherText;
      const std::string json =
          qv_data_interface::DecryptSessionText(cipher.data(), static_cast<std::int32_t>(cipher.size()));
      library_test::InstanceInfo info;
      EXPECT_EQ(qv_data_interface::ParseInstanceInfo(json.c_str(), info), 0);
      EXPECT_EQ(info.subStreamInfoList.size(), 2U);
    }
  }

  std::int64_t LiveWithNothingMade() {
    controller.reset();
    fakes::Recorder::Get().Reset();
    fakes::ResetServices();
    return allocation::Live();
  }

  // Says how many allocations failed.
  std::uint64_t Run(const Story& story, std::uint64_t number) {
    const auto [mode, isDestroyed] = GetParam();
    StartOver();
    story.prepare(*this);
    allocation::Arm(number, mode);
    const bool hasThrown = Do(story.name, [&] { story.action.run(*this); });
    if (isDestroyed) Do("destruction", [this] { controller.reset(); });
    const std::uint64_t failed = allocation::Disarm();
    // Only the destructor keeps what it meets to itself.
    if (mode == Mode::kOnce && !isDestroyed && story.name != "destruction") {
      EXPECT_EQ(hasThrown, failed == 1);
    }
    thrown += hasThrown ? 1 : 0;
    ExpectWholeTexts();
    Services().createWsFails = 0;
    const Counted counted;
    if (isDestroyed) {
      EXPECT_EQ(Services().LiveConnections(), 0);
      EXPECT_THAT(Services().liveRows, testing::IsEmpty());
      // An Init that failed has left services behind it that were never in use, and so are not stopped.
      fakes::ResetServices();
    }
    ExpectSilenceAfterRelease();
    ExpectThatItConnectsAgain();
    controller.reset();
    return failed;
  }

  const Uncounted own;
  std::uint64_t thrown = 0;
};

TEST_P(AllocationSweep, EveryFailureReachesItsCallerAndLeavesNothingStuckOrBehind) {
  std::uint64_t places = 0, total = 0;
  for (const Story& story : Stories()) {
    std::uint64_t number = 0, failed = 0;
    do {
      const std::string name = std::string(story.name) + ", allocation " + std::to_string(++number);
      SCOPED_TRACE(name);
      const std::int64_t live = LiveWithNothingMade();
      failed = Run(story, number);
      EXPECT_EQ(LiveWithNothingMade(), live) << "something has leaked";
      ASSERT_FALSE(HasFailure());
      total += failed;
    } while (failed > 0);
    places += number - 1;
  }
  EXPECT_GT(places, 500U);
  EXPECT_GT(thrown, 0U);
  std::cout << places << " places, " << total << " failed allocations, " << thrown << " exceptions" << std::endl;
}

INSTANTIATE_TEST_SUITE_P(All, AllocationSweep,
                         testing::Combine(testing::Values(Mode::kOnce, Mode::kFromThenOn), testing::Bool()),
                         [](const auto& tested) {
                           return std::string(std::get<0>(tested.param) == Mode::kOnce ? "Once" : "FromThenOn") +
                                  (std::get<1>(tested.param) ? "Destroyed" : "Released");
                         });

}  // namespace
}  // namespace sweep
