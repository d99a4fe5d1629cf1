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
  void (*arrange)(Faults& faults);
  // The moment has come when the cloud has seen this; empty: right after GetPhoneConnect.
  bool (*hasCome)(const CloudStats& stats);
};

class ReleaseAt : public EndToEnd, public testing::WithParamInterface<Moment> {};

TEST_P(ReleaseAt, IsPromptAndFinalAndTheNextConnectWorks) {
  Faults faults;
  if (GetParam().arrange != nullptr) GetParam().arrange(faults);
  StartCloud(faults);
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
    testing::Values(Moment{"RightAfterGetPhoneConnect", nullptr, nullptr},
                    Moment{"DuringTheFirstFrame", nullptr, [](const CloudStats& s) { return s.framesSent == 1; }},
                    Moment{"AmongTheFrames", nullptr, [](const CloudStats& s) { return s.framesSent == 10; }},
                    Moment{"WhileARefreshIsUnanswered",
                           [](Faults& f) {
                             f.errorCode = qv_cloud::kSessionExpired;
                             f.httpLateMs = 2000;
                           },
                           [](const CloudStats& s) { return s.refreshes == 1; }}),
    kNameOf);

struct Inside {
  const char* name;
  const char* notice;  // from inside the first one that begins so
  void (*arrange)(Faults& faults);
};

constexpr char kIspList[] = "OnIspList";

class InsideANotice : public EndToEnd, public testing::WithParamInterface<Inside> {
 protected:
  // Connects and does the thing once, inside the notice and with the last pointer to the controller in `last`; waits
  // until it is done.
  void ConnectAndDoInside(std::function<void()> thing) {
    Faults faults;
    if (GetParam().arrange != nullptr) GetParam().arrange(faults);
    StartCloud(faults);
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

INSTANTIATE_TEST_SUITE_P(
    All, InsideANotice,
    testing::Values(Inside{"Connecting", kConnecting, nullptr}, Inside{"ChooseFormat", "OnChoose", nullptr},
                    Inside{"Stands", kStands, nullptr}, Inside{"PlayAnswer", "OnPlayRsp", nullptr},
                    Inside{"FirstFrame", kFirstFrame, nullptr}, Inside{"IspList", kIspList, nullptr},
                    Inside{"Disconnected", kDisconnected, [](Faults& f) { f.dropAfterFrames = 1; }},
                    Inside{"ServiceCode", "OnServiceCode", [](Faults& f) { f.errorCode = 60102029; }},
                    Inside{"FailedRequest", "OnStatus 60702002", [](Faults& f) { f.httpStatus = 500; }},
                    Inside{"RefusedRequest", "OnStatus 60301005", [](Faults& f) { f.refuseConnect = 60301005; }},
                    Inside{"RefusedRefresh", "OnStatus 60301007",
                           [](Faults& f) {
                             f.errorCode = qv_cloud::kSessionExpired;
                             f.refuseRefresh = 60301007;
                           }}),
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
