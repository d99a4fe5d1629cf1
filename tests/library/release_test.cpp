// What a release does, in order. What may come in between is the sweep's.
#include "tests/library/library_test.h"

namespace library_test {
namespace {

const Calls kRelease = {"collect.Report(1, 4, , , )", "wsManager.DestroyWS(1)", "wsManager.Stop()", "pass.Stop()",
                        "collect.DeleteInstanceInfo(7)"};

struct Release : LibraryTest {};

TEST_F(Release, EndsEverythingInOrderOnce) {
  Connect();
  controller->ReleasePhoneConnect();
  EXPECT_EQ(Take(), kRelease);
  EXPECT_THAT(LastStatus().releaseTime, IsNow());
  EXPECT_EQ(frontEnd.use_count(), 1) << "the notice is let go";
  controller->ReleasePhoneConnect();
  controller.reset();
  EXPECT_THAT(Take(), IsEmpty());
  EXPECT_EQ(Services().sessionCache.size(), 1U) << "the cached session stays";
}

TEST_F(Release, OfAControllerThatNeverConnectedStopsTheServices) {
  InitReady();
  controller->ReleasePhoneConnect();
  EXPECT_THAT(Take(), ElementsAre(kRelease[0], kRelease[2], kRelease[3]));
}

}  // namespace
}  // namespace library_test
