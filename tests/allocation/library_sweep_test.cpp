// Every allocation of a connection's whole life fails, on recorded fakes: once, or with all after it.
#include <iostream>

#include "tests/allocation/failing_allocations.h"
#include "tests/library/library_test.h"

namespace library_test {
namespace {

using allocation::Mode;
using fakes::Counted;
using fakes::Uncounted;

enum class End { kRelease, kDestruction };

// URLs and texts past what a string holds in place, so that each of them is an allocation.
InstanceInfo LongInfo(const std::string& sessionId) {
  InstanceInfo info = MakeInfo("a-session-id-that-fits-in-no-string-" + sessionId);
  info.endpoints.webSocketDomain = "the-default-line.of-a-long-domain.example";
  for (auto& line : info.subStreamInfoList) {
    line.label = "a label that fits in no string " + line.label;
    line.endpoints.webSocketDomain = line.label.substr(line.label.size() - 3) + ".line-of-a-long-domain.example";
  }
  info.streamStrategyList = {1, 2, 3};
  return info;
}

const std::vector<std::string> kUrls = {"wss://the-default-line.of-a-long-domain.example:8443",
                                        "wss://one.line-of-a-long-domain.example:81",
                                        "wss://two.line-of-a-long-domain.example:82"};

struct AllocationSweep : LibraryTest, testing::WithParamInterface<std::tuple<Mode, End>> {
  template <class Step>
  void Do(const char* name, Step&& step) {
    if (allocation::Do(name, step)) ++thrown;
  }

  void ServiceAnswers(const char* name, std::int32_t transport, std::uint32_t status, std::int32_t code) {
    const auto info = std::make_shared<InstanceInfo>(LongInfo("1"));
    const auto refreshed = std::make_shared<pass_interface::RefreshSessionRsp>();
    info->code = refreshed->code = code;
    info->message = refreshed->message = "a message that fits in no string in place";
    info->requestTag = refreshed->requestTag = "a request tag that fits in no string in place";
    refreshed->sessionId = "a-renewed-session-id-that-fits-in-no-string";
    auto& sink = dynamic_cast<pass_interface::IPassInterfaceNotic&>(*controller);
    Do(name, [&] { sink.OnPhoneConnectRsp(transport, status, info); });
    Do(name, [&] { sink.OnRefreshSessionRsp(transport, status, refreshed); });
  }

  void Stream() {
    IWSInterfaceNotic& sink = Notices();
    Do("connecting", [&] { sink.OnConnectState(1); });
    Do("resolved", [&] { sink.OnConnectStep(5); });
    Do("open", [&] { sink.OnConnectStep(0); });
    Do("authenticated", [&] { sink.OnAuthRsp(0, 0, 0, "264,265"); });
    Do("connected", [&] { sink.OnConnectState(2); });
    Do("playing", [&] { sink.OnPlayRsp(1, 2, 3, 4, 5, 6, 7, 8, 9, 10); });
    Do("first frame", [&] { sink.OnFirstFrame(1, 2, 3, 264); });
    Do("text", [&] { sink.OnNotice6("a text that fits in no string in place"); });
    Do("parameters", [&] { sink.OnVideoParamRsp(0, 1, 30, 2048, 720, 1280); });
    Do("own code", [&] { sink.OnErrorCode(60102029, "text"); });
    Do("session expired", [&] { sink.OnErrorCode(60103013, "text"); });
    Do("disconnected", [&] { sink.OnConnectState(0); });
  }

  void Command() {
    Do("commands", [this] {
      controller->SendInReq3(1, 2, 3, 4);
      controller->SendInReq7("a text that fits in no string in place", "another one that fits in none");
      controller->SendInMicParamReq(1, 48000, 2);
      controller->SendInCameraParamReq(264, 1, 2, 3, 4);
      controller->SendInReq17(1);
    });
    Do("another line", [this] { controller->ChangeIsp(1); });
    Do("an unknown line", [this] { controller->ChangeIsp(99); });
    Do("the default line", [this] { controller->ChangeIsp(qv_data_interface::kIspCodeDefault); });
    Do("a version", [this] { Internal().SetSdkVersion("a version that fits in no string in place"); });
    Do("a milestone", [this] { Internal().RecordMilestone("a name that fits in no string in place", 1); });
    Do("a message", [this] { Internal().SendMessageCollect(0, 0, -1, "detail", "extra"); });
  }

  void WholeLife() {
    controller.reset();
    Do("create", [this] { controller = IQVDataInterface::Create(); });
    if (!controller) NewController();
    Do("initialise", [this] { Init(); });
    Do("connect", [this] { controller->GetPhoneConnect(); });
    ServiceAnswers("granted", 0, 200, 0);
    Stream();
    Command();
    ServiceAnswers("no transport", 7, 0, 0);
    ServiceAnswers("no HTTP 200", 0, 500, 0);
    ServiceAnswers("refused", 0, 200, 60101001);
    Do("release", [this] { controller->ReleasePhoneConnect(); });
    Do("initialise again", [this] { Init(); });
    Do("connect from the cache", [this] { controller->GetPhoneConnect(); });
  }

  // Nothing that was made is left at the services.
  void ExpectAllGivenBack() {
    EXPECT_EQ(Services().LiveConnections(), 0);
    EXPECT_THAT(Services().liveRows, IsEmpty());
    for (const auto& connection : Services().connections) {
      EXPECT_THAT(kUrls, Contains(connection.url));
    }
    for (const auto& [key, row] : Services().sessionCache) {
      EXPECT_EQ(key, cleanRow.first);
      EXPECT_EQ(row.cipherText, cleanRow.second);
    }
  }

  void ExpectConnects() {
    ASSERT_EQ(Init(), 0);
    const std::size_t before = Services().connections.size();
    // With whatever the story has left in the cache.
    ASSERT_EQ(controller->GetPhoneConnect(), 0);
    if (Services().connections.size() == before) Grant(LongInfo("1"));
    ASSERT_EQ(Services().connections.size(), before + 1);
    EXPECT_EQ(LastConnection().url, kUrls[0]);
    EXPECT_TRUE(CommandsAreOpen());
    Take();
    Notices().OnFirstFrame(1, 2, 3, 264);
    EXPECT_THAT(Take(), Contains("notice.OnFirstFrame(1, 2, 3, 264)"));
    const Counted counted;
    controller->ReleasePhoneConnect();
  }

  // Says how many allocations failed.
  std::uint64_t Run(std::uint64_t number) {
    const auto [mode, end] = GetParam();
    thrown = 0;
    allocation::Arm(number, mode);
    WholeLife();
    if (end == End::kDestruction) Do("destruction", [this] { controller.reset(); });
    const std::uint64_t failed = allocation::Disarm();

    // Only the destructor keeps what it meets to itself.
    if (mode == Mode::kOnce && end == End::kRelease) {
      EXPECT_EQ(thrown, failed);
    }
    if (end == End::kDestruction) {
      ExpectAllGivenBack();
      NewController();
    } else {
      Do("release", [this] { controller->ReleasePhoneConnect(); });
      ExpectAllGivenBack();
    }
    ExpectConnects();
    ExpectAllGivenBack();
    const Counted counted;
    controller.reset();
    return failed;
  }

  void StartClean() {
    fakes::Recorder::Get().Reset();
    fakes::ResetServices();
  }

  const Uncounted own;
  std::uint64_t thrown = 0;
  std::pair<std::string, std::string> cleanRow;
};

TEST_P(AllocationSweep, EveryFailureReachesItsCallerAndLeavesNothingStuckOrBehind) {
  StartClean();
  NewController();
  ASSERT_EQ(Init(), 0);
  Grant(LongInfo("1"));
  ASSERT_EQ(Services().sessionCache.size(), 1U);
  const auto row = *Services().sessionCache.begin();
  cleanRow = {row.first, row.second.cipherText};
  controller.reset();

  StartClean();
  const std::int64_t liveBefore = allocation::Live();
  std::uint64_t number = 0, failed = 0, total = 0, reported = 0;
  do {
    SCOPED_TRACE("allocation " + std::to_string(++number));
    failed = Run(number);
    StartClean();
    ASSERT_EQ(allocation::Live(), liveBefore) << "something has leaked";
    ASSERT_FALSE(HasFailure());
    total += failed;
    reported += thrown;
  } while (failed > 0);
  EXPECT_GT(number, 100U);
  EXPECT_GT(reported, 0U);
  std::cout << number - 1 << " places, " << total << " failed allocations, " << reported << " exceptions" << std::endl;
}

INSTANTIATE_TEST_SUITE_P(All, AllocationSweep,
                         testing::Combine(testing::Values(Mode::kOnce, Mode::kFromThenOn),
                                          testing::Values(End::kRelease, End::kDestruction)),
                         [](const auto& tested) {
                           return std::string(std::get<0>(tested.param) == Mode::kOnce ? "Once" : "FromThenOn") +
                                  (std::get<1>(tested.param) == End::kRelease ? "Released" : "Destroyed");
                         });

}  // namespace
}  // namespace library_test
