// Every allocation of a connection's whole life fails, over the reference services and a cloud: in the front end's
// calls and on the services' threads alike. The cloud's own thread never fails.
#include <algorithm>
#include <fstream>
#include <iostream>
#include <thread>

#include "collect_interface/collect_interface.h"
#include "database_interface/database_interface.h"
#include "reference/common/service_threads.h"
#include "reference/common/settings.h"
#include "tests/allocation/failing_allocations.h"
#include "tests/end_to_end/end_to_end.h"
#include "tests/support/uncounted.h"

namespace end_to_end {
namespace {

using allocation::Do;
using allocation::Mode;
using tests::Counted;
using tests::Uncounted;

// gtest's, on the main thread.
const bool testsOwnThread = (Uncounted::RestOfThisThread(), true);

// So many tests share the places between them.
constexpr std::uint64_t kShares = 4;

class LoopbackSweep : public EndToEnd, public testing::WithParamInterface<std::tuple<Mode, std::uint64_t>> {
 protected:
  LoopbackSweep() {
    qv_cloud::CloudOptions options;
    // The hand-shakes of TLS take no memory of the program's own, but most of the time of a story.
    options.plain = true;
    system.useWss = false;
    options.onEvent = [](const std::string&) {
      thread_local const bool cloudsThread = (Uncounted::RestOfThisThread(), true);
      static_cast<void>(cloudsThread);
    };
    cloud.emplace(std::move(options));
    baseUrl = cloud->BaseUrl();
    reference::SetOtlpEndpoint(baseUrl);
    // One frame is all that is looked at. What waits for an answer that got lost does so as short as is allowed.
    video.frameRate = 0;
    system.wsManagerValue = system.httpValue1 = system.httpValue2 = 1000;
  }

  std::int32_t InitWithFrontEnd() {
    return controller->Init(credential1.c_str(), credential2.c_str(), credential3.c_str(), targetId.c_str(), 0,
                            frontEnd, &video, &system, kReconnectNumber, baseUrl.c_str());
  }

  // A first frame, or a failure for good; an attempt, its end and its loss are followed by the next one.
  static bool IsNews(const std::string& notice) {
    const auto begins = [&notice](const char* text) { return notice.starts_with(text); };
    return begins(kFirstFrame) ||
           (begins("OnStatus") && !begins(kStands) && !begins(kConnecting) && !begins(kDisconnected));
  }

  // Waits for news, in vain ones excepted: isExcused is asked every now and then. False when neither came.
  bool HearsNews(const std::function<bool()>& isExcused = [] { return false; }) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    const auto hasCome = [](const Texts& notices) { return std::any_of(notices.begin(), notices.end(), IsNews); };
    while (!frontEnd->notices.WaitUntil(hasCome, std::chrono::milliseconds(20)) && !isExcused()) {
      if (std::chrono::steady_clock::now() > end) return false;
    }
    frontEnd->notices.Clear();
    return true;
  }

  // Unless the caller was told, the front end hears of its connection, or a notice had no memory and the log says so.
  void Await(const char* step, bool isUnderWay) {
    if (!isUnderWay) return;
    const auto isExcused = [this] {
      if (mode == Mode::kFromThenOn && allocation::FailedSoFar() > 0) return true;
      const std::string log = ReadFile(LogDirectory() / "QV_DATA.log").substr(storyBegin);
      return log.find("a notice threw") != std::string::npos || log.find("of an answer threw") != std::string::npos;
    };
    EXPECT_TRUE(HearsNews(isExcused)) << "after " << step << " the front end hears nothing";
  }

  void Connect(const char* step) {
    bool isUnderWay = false;
    Do("initialise", [this] { InitWithFrontEnd(); });
    Do(step, [&] { isUnderWay = controller->GetPhoneConnect() == 0; });
    Await(step, isUnderWay);
  }

  void WholeLife() {
    controller.reset();
    Do("create", [this] { controller = qv_data_interface::IQVDataInterface::Create(); });
    if (!controller) controller = qv_data_interface::IQVDataInterface::Create();
    Connect("connect by the service");
    Do("command", [this] { controller->SendInReq8("a text that fits in no string in place"); });
    bool isUnderWay = false;
    Do("another line", [&] { isUnderWay = controller->ChangeIsp(qv_cloud::kLineA) == 0; });
    Await("another line", isUnderWay);
    Do("release", [this] { controller->ReleasePhoneConnect(); });
    Connect("connect from the cache");
  }

  // With all that may have been left by the story: the same controller connects.
  void ExpectConnects() {
    controller->ReleasePhoneConnect();
    frontEnd = std::make_shared<FrontEnd>();
    ASSERT_EQ(InitWithFrontEnd(), 0);
    ASSERT_EQ(controller->GetPhoneConnect(), 0);
    ASSERT_TRUE(HearsNews());
    ASSERT_EQ(controller->SendInReq8("text"), 0);
  }

  // Says how many allocations failed.
  std::uint64_t Run(std::uint64_t number) {
    storyBegin = std::filesystem::file_size(LogDirectory() / "QV_DATA.log");
    // One that is not in the cache.
    targetId = "phone-" + std::to_string(number);
    frontEnd = std::make_shared<FrontEnd>();
    allocation::Arm(number, mode);
    WholeLife();
    // In every other story the release is left to the destructor.
    if (number / kShares % 2 == 0) {
      Do("release", [this] { controller->ReleasePhoneConnect(); });
    } else {
      Do("destruction", [this] { controller.reset(); });
    }
    const std::uint64_t failed = allocation::Disarm();
    const Counted counted;
    if (!controller) controller = qv_data_interface::IQVDataInterface::Create();
    ExpectConnects();
    controller.reset();
    EXPECT_TRUE(reference::WaitForServiceThreads(kPatience)) << "a service's thread does not end";
    ForgetConnections();
    CloseDatabases();
    return failed;
  }

  // The collector remembers those that it has traced.
  void ForgetConnections() {
    reference::SetOtlpEndpoint("");
    collector->ReportMessageCollect(std::make_shared<pass_interface::MessageCollect>());
    reference::SetOtlpEndpoint(baseUrl);
  }

  // They keep their prepared statements, some of which are used now and then only. The next story opens them anew.
  void CloseDatabases() {
    const auto notADirectory = directory / "a file";
    std::ofstream(notADirectory) << "in its place";
    reference::SetDataDirectory(notADirectory);
    std::string text;
    EXPECT_EQ(database_interface::IDatabaseInterface::GetDbInstance()->LoadSessionCache("key", 0, text), 0);
    EXPECT_EQ(collector->DeleteInstanceInfo(1), -1);
    reference::SetDataDirectory(directory);
  }

  // A service's thread frees the last of its memory when it counts as ended already.
  static bool LiveFallsTo(std::int64_t count) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (allocation::Live() > count && std::chrono::steady_clock::now() < end) std::this_thread::yield();
    return allocation::Live() <= count;
  }

  const Mode mode = std::get<0>(GetParam());
  const std::shared_ptr<collect_interface::ICollectInterface> collector =
      collect_interface::ICollectInterface::GetCollectInstance(false);
  std::string baseUrl;
  std::uintmax_t storyBegin = 0;
};

TEST_P(LoopbackSweep, EveryFailureIsToldAndLeavesNothingStuckOrBehind) {
  // What is made once for the process is made here.
  Run(1000000);
  Run(1000001);
  std::int64_t live = allocation::Live();
  std::uint64_t number = 1 + std::get<1>(GetParam()), failed = 0, total = 0, places = 0;
  do {
    SCOPED_TRACE("allocation " + std::to_string(number));
    failed = Run(number);
    EXPECT_TRUE(LiveFallsTo(live)) << allocation::Live() - live << " blocks have leaked";
    ASSERT_FALSE(HasFailure());
    live = std::min(live, allocation::Live());
    total += failed;
    places += failed > 0 ? 1 : 0;
    number += kShares;
  } while (failed > 0);
  EXPECT_GT(places, 200U);
  std::cout << places << " places, " << total << " failed allocations" << std::endl;
}

INSTANTIATE_TEST_SUITE_P(All, LoopbackSweep,
                         testing::Combine(testing::Values(Mode::kOnce, Mode::kFromThenOn),
                                          testing::Range<std::uint64_t>(0, kShares)),
                         [](const auto& tested) {
                           return (std::get<0>(tested.param) == Mode::kOnce ? "Once" : "FromThenOn") +
                                  std::to_string(std::get<1>(tested.param));
                         });

}  // namespace
}  // namespace end_to_end
