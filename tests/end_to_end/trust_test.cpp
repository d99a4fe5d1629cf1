// Certificates that must not be trusted.
#include "reference/common/settings.h"
#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

using qv_cloud::ServedCertificate;

struct Bad {
  const char* name;
  ServedCertificate certificate;
  const char* logged;
};

void PrintTo(const Bad& bad, std::ostream* out) {
  *out << bad.name;
}

class BadCertificate : public EndToEnd, public testing::WithParamInterface<Bad> {};

TEST_P(BadCertificate, EndsTheRequestBeforeAnythingIsSent) {
  qv_cloud::CloudOptions options;
  options.certificate = GetParam().certificate;
  StartCloud(options);
  Connect();
  ASSERT_TRUE(frontEnd->notices.WaitFor("OnStatus 60702001"));
  EXPECT_EQ(Stats().phoneConnects, 0U);
  EXPECT_NE(Log().find(GetParam().logged), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    All, BadCertificate,
    testing::Values(Bad{"Expired", ServedCertificate::expired, "certificate has expired"},
                    Bad{"NotYetValid", ServedCertificate::notYetValid, "certificate is not yet valid"},
                    Bad{"WrongHost", ServedCertificate::wrongHost, "no alternative certificate subject name matches"},
                    Bad{"SelfSigned", ServedCertificate::selfSigned, "self-signed certificate"},
                    Bad{"UnknownAuthority", ServedCertificate::unknownAuthority, "unable to get local issuer"}),
    [](const auto& tested) { return tested.param.name; });

struct Trust : EndToEnd {};

// The cached session leads straight to the signalling connection, whose authority is trusted no longer.
TEST_F(Trust, OfTheSignallingConnectionIsCheckedForEachConnect) {
  StartCloud();
  ASSERT_TRUE(ConnectToFirstFrame());
  controller->ReleasePhoneConnect();
  const qv_cloud::Cloud other;
  reference::SetAuthorityFile(other.AuthorityFile());
  Connect();
  ASSERT_TRUE(frontEnd->notices.WaitFor(kDisconnected, 2));
  EXPECT_EQ(Stats().authentications, 1U);
  EXPECT_NE(Log().find("unable to get local issuer certificate"), std::string::npos);
  EXPECT_NE(frontEnd->States().find("CDCD"), std::string::npos) << frontEnd->States();
  EXPECT_EQ(frontEnd->notices.Count(kStands), 0U);
}

TEST_F(Trust, AMissingAuthorityFileTrustsNobody) {
  StartCloud();
  reference::SetAuthorityFile(directory / "missing.pem");
  Connect();
  ASSERT_TRUE(frontEnd->notices.WaitFor("OnStatus 60702001"));
  EXPECT_EQ(Stats().phoneConnects, 0U);
}

}  // namespace
}  // namespace end_to_end
