// A release in every kind of notice, from another thread, from inside, and by dropping the last pointer there: nothing
// comes afterwards, and the next connect works. At every step before the notices: the table of network faults.
#include <atomic>

#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

using qv_cloud::Faults;

struct Notice {
  const char* name;
  const char* text;  // the first one that begins so
  Faults faults = {};
};

constexpr char kByDropping[] = "ByDropping";
constexpr char kIspList[] = "OnIspList";

class Release : public EndToEnd, public testing::WithParamInterface<std::tuple<Notice, std::string>> {
 protected:
  // Waits until it has come to pass.
  void ReleaseInside(const std::string& wanted, bool byDropping) {
    // Shared, since the notice may still be under way when the test goes on.
    struct Progress {
      tests::Moment connected, done;
      std::atomic<bool> begun = false;
      std::shared_ptr<qv_data_interface::IQVDataInterface> last;
    };
    const auto progress = std::make_shared<Progress>();
    Init([=](const std::string& notice) {
      if (!notice.starts_with(wanted) || progress->begun.exchange(true)) return;
      EXPECT_TRUE(progress->connected.Await());
      byDropping ? progress->last.reset() : progress->last->ReleasePhoneConnect();
      progress->done.Come();
    });
    progress->last = std::move(controller);
    EXPECT_EQ(progress->last->GetPhoneConnect(), 0);
    progress->connected.Come();
    ASSERT_TRUE(progress->done.Await()) << testing::PrintToString(frontEnd->notices.Lines());
    controller = byDropping ? qv_data_interface::IQVDataInterface::Create() : progress->last;
  }

  // On the thread that the wanted notice is on: one of the other thread may be under way, and the release from inside
  // does not wait for it.
  static Texts Told(const FrontEnd& frontEnd, const std::string& wanted) {
    Texts told = frontEnd.notices.Lines();
    std::erase_if(told,
                  [&](const std::string& notice) { return notice.starts_with(kIspList) != (wanted == kIspList); });
    return told;
  }
};

TEST_P(Release, IsFinalAndTheNextConnectWorks) {
  const auto& [notice, way] = GetParam();
  const bool isOutside = way == "FromOutside";
  StartCloud(notice.faults);
  if (isOutside) {
    Connect();
    ASSERT_TRUE(frontEnd->notices.WaitFor(notice.text));
    EXPECT_TRUE(ReleaseIsPrompt());
  } else {
    ReleaseInside(notice.text, way == kByDropping);
    ASSERT_FALSE(HasFailure());
    const Texts told = Told(*frontEnd, notice.text);
    EXPECT_TRUE(told.back().starts_with(notice.text)) << testing::PrintToString(told);
  }
  const auto released = frontEnd;
  const Texts told = Told(*released, notice.text);

  cloud->SetFaults({});
  EXPECT_TRUE(CloudHasConnections(0));
  ASSERT_TRUE(ConnectToFirstFrame());
  EXPECT_TRUE(CloudHasConnections(1));
  EXPECT_EQ(Told(*released, notice.text), told);
  if (isOutside) {
    EXPECT_EQ(released.use_count(), 1) << "somebody still holds the released front end";
  }
}

const Notice kNotices[] = {
    {"Connecting", kConnecting},
    {"ChooseFormat", "OnChoose"},
    {"Stands", kStands},
    {"PlayAnswer", "OnPlayRsp"},
    {"FirstFrame", kFirstFrame},
    {"IspList", kIspList},
    {"Disconnected", kDisconnected, {.dropAfterFrames = 1}},
    {"ServiceCode", "OnServiceCode", {.errorCode = 60102029}},
    {"FailedRequest", "OnStatus(60702002", {.httpStatus = 500}},
    {"RefusedRequest", "OnStatus(60301005", {.refuseConnect = 60301005}},
    {"RefusedRefresh", "OnStatus(60301007", {.refuseRefresh = 60301007, .errorCode = qv_cloud::kSessionExpired}}};

INSTANTIATE_TEST_SUITE_P(All, Release,
                         testing::Combine(testing::ValuesIn(kNotices),
                                          testing::Values("FromOutside", "FromInside", kByDropping)),
                         [](const auto& tested) {
                           return std::get<Notice>(tested.param).name + std::get<std::string>(tested.param);
                         });

struct Reentry : EndToEnd {};

// With a session from the cache the list of lines comes inside GetPhoneConnect.
TEST_F(Reentry, OfAReleaseIntoGetPhoneConnectEndsThatConnect) {
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
