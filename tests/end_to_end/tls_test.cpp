// That the clients read whom they trust anew for each connect. The peers that must not be trusted are rows of the
// network faults.
#include "reference/common/settings.h"
#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

struct Tls : EndToEnd {};

// The first phone's session is cached and leads straight to the line; the second phone has to ask for one.
TEST_F(Tls, TheTrustIsReadForEachConnect) {
  StartCloud();
  ASSERT_TRUE(ConnectToFirstFrame());
  controller->ReleasePhoneConnect();
  // The system's, who do not know the cloud's; then nobody.
  reference::SetAuthorityFile("");
  Connect();
  ASSERT_TRUE(frontEnd->notices.WaitFor(kDisconnected));
  const std::filesystem::path file = directory / "authority.pem";
  tests::WriteFile(file, "");
  reference::SetAuthorityFile(file);
  ASSERT_TRUE(frontEnd->notices.WaitFor(kDisconnected, frontEnd->notices.Count(kDisconnected) + 2));
  EXPECT_NE(Log().find("authority.pem is empty"), std::string::npos);
  EXPECT_EQ(frontEnd->notices.Count(kStands), 0U);
  EXPECT_EQ(Stats().authentications, 1U);
  tests::WriteFile(file, ReadFile(cloud->AuthorityFile()));
  EXPECT_TRUE(frontEnd->notices.WaitFor(kStands)) << "an attempt after the file was corrected succeeds";
  controller->ReleasePhoneConnect();
  reference::SetAuthorityFile(directory / "missing.pem");
  targetId = "phone-2";
  Connect();
  ASSERT_TRUE(frontEnd->notices.WaitFor("OnStatus(60702001"));
  EXPECT_EQ(Stats().phoneConnects, 1U);
}

}  // namespace
}  // namespace end_to_end
