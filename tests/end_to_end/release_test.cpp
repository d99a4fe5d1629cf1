// A release at every moment and from inside every kind of notice: it is prompt, nothing comes afterwards, and the same
// controller connects again.
#include <atomic>
#include <future>

#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

using qv_cloud::CloudStats;
using qv_cloud::Faults;

struct Moment {
  const char* name;
  // The moment has come when the cloud has seen this; empty: right after GetPhoneConnect.
  bool (*hasCome)(const CloudStats& stats);
  Faults faults = {};
};

class ReleaseAt : public EndToEnd, public testing::WithParamInterface<Moment> {};

TEST_P(ReleaseAt, IsPromptAndFinalAndTheNextConnectWorks) {
  StartCloud(GetParam().faults);
  Connect();
  if (GetParam().hasCome != nullptr) {
    ASSERT_TRUE(CloudSees(GetParam().hasCome));
  }
  EXPECT_TRUE(ReleaseIsPrompt());
  const auto released = frontEnd;
  const Texts told = released->notices.All();

  cloud->SetFaults({});
  EXPECT_TRUE(CloudHasConnections(0));
  ASSERT_TRUE(ConnectToFirstFrame());
  EXPECT_EQ(released->notices.All(), told);
  EXPECT_EQ(released.use_count(), 1) << "somebody still holds the front end of the released connection";
  EXPECT_TRUE(ReleaseIsPrompt());
  EXPECT_TRUE(CloudHasConnections(0));
}

INSTANTIATE_TEST_SUITE_P(
    All, ReleaseAt,
    testing::Values(Moment{"RightAfterGetPhoneConnect", nullptr},
                    Moment{"DuringTheFirstFrame", [](const CloudStats& s) { return s.framesSent == 1; }},
                    Moment{"AmongTheFrames", [](const CloudStats& s) { return s.framesSent == 10; }},
                    Moment{"WhileARefreshIsUnanswered",
                           [](const CloudStats& s) { return s.refreshes == 1; },
                           {.httpLateMs = 2000, .errorCode = qv_cloud::kSessionExpired}}),
    kNameOf);

struct Inside {
  const char* name;
  const char* notice;  // from inside the first one that begins so
  Faults faults = {};
};

constexpr char kIspList[] = "OnIspList";

class InsideANotice : public EndToEnd, public testing::WithParamInterface<Inside> {
 protected:
  // Connects and does the thing once, inside the notice and with the last pointer to the controller in `last`; waits
  // until it is done.
  void ConnectAndDoInside(std::function<void()> thing) {
    StartCloud(GetParam().faults);
    // Shared, since the notice may still be under way when the test goes on.
    struct Progress {
      std::promise<void> connected, done;
      std::atomic<bool> begun = false;
    };
    const auto progress = std::make_shared<Progress>();
    auto isDone = progress->done.get_future();
    Init([=, wanted = std::string(GetParam().notice)](const std::string& notice) {
      if (!notice.starts_with(wanted) || progress->begun.exchange(true)) return;
      if (progress->connected.get_future().wait_for(kPatience) == std::future_status::ready) thing();
      progress->done.set_value();
    });
    last = std::move(controller);
    EXPECT_EQ(last->GetPhoneConnect(), 0);
    progress->connected.set_value();
    ASSERT_EQ(isDone.wait_for(2 * kPatience), std::future_status::ready) << testing::PrintToString(Told());
  }

  // Of the thread that the notice is on: a notice of the other one may be under way, and the release does not wait.
  Texts Told() const {
    const bool isIspList = std::string(GetParam().notice) == kIspList;
    Texts told = frontEnd->notices.All();
    std::erase_if(told, [=](const std::string& notice) { return notice.starts_with(kIspList) != isIspList; });
    return told;
  }

  void ExpectThatNothingFollowedAndTheNextConnectWorks() {
    const Texts told = Told();
    EXPECT_TRUE(told.back().starts_with(GetParam().notice)) << testing::PrintToString(told);
    cloud->SetFaults({});
    ASSERT_TRUE(ConnectToFirstFrame());
    EXPECT_TRUE(CloudHasConnections(1));
  }

  std::shared_ptr<qv_data_interface::IQVDataInterface> last;
};

TEST_P(InsideANotice, AReleaseDoesNotBlock) {
  ConnectAndDoInside([this] { last->ReleasePhoneConnect(); });
  controller = std::move(last);
  ExpectThatNothingFollowedAndTheNextConnectWorks();
}

TEST_P(InsideANotice, TheLastPointerMayBeDropped) {
  ConnectAndDoInside([this] { last.reset(); });
  controller = qv_data_interface::IQVDataInterface::Create();
  ExpectThatNothingFollowedAndTheNextConnectWorks();
}

INSTANTIATE_TEST_SUITE_P(All, InsideANotice,
                         testing::Values(Inside{"Connecting", kConnecting}, Inside{"ChooseFormat", "OnChoose"},
                                         Inside{"Stands", kStands}, Inside{"PlayAnswer", "OnPlayRsp"},
                                         Inside{"FirstFrame", kFirstFrame}, Inside{"IspList", kIspList},
                                         Inside{"Disconnected", kDisconnected, {.dropAfterFrames = 1}},
                                         Inside{"ServiceCode", "OnServiceCode", {.errorCode = 60102029}},
                                         Inside{"FailedRequest", "OnStatus 60702002", {.httpStatus = 500}},
                                         Inside{"RefusedRequest", "OnStatus 60301005", {.refuseConnect = 60301005}},
                                         Inside{"RefusedRefresh",
                                                "OnStatus 60301007",
                                                {.refuseRefresh = 60301007, .errorCode = qv_cloud::kSessionExpired}}),
                         kNameOf);

struct Release : EndToEnd {};

// With a session from the cache the list of lines comes inside GetPhoneConnect.
TEST_F(Release, InsideGetPhoneConnectEndsThatConnect) {
  StartCloud();
  ASSERT_TRUE(ConnectToFirstFrame());
  controller->ReleasePhoneConnect();
  Init([released = controller.get()](const std::string& notice) {
    if (notice.starts_with(kIspList)) released->ReleasePhoneConnect();
  });
  EXPECT_EQ(controller->GetPhoneConnect(), -1);
  EXPECT_EQ(Stats().phoneConnects, 1U);
  EXPECT_TRUE(CloudHasConnections(0));
  EXPECT_TRUE(ConnectToFirstFrame());
}

}  // namespace
}  // namespace end_to_end
