// Peers that must not be trusted, each for HTTP and for a line: nothing is sent to them, and the log says why.
#include "tests/end_to_end/sites.h"

namespace end_to_end {
namespace {

using qv_cloud::ServedCertificate;

struct Row {
  std::string name;
  ServedCertificate kind;
  const char* logged;
  bool isHttp;

  qv_cloud::CloudOptions Options() const {
    qv_cloud::CloudOptions options;
    (isHttp ? options.certificate : options.lineCertificate) = kind;
    return options;
  }
};

struct Tls : Sites {};

TEST_F(Tls, EveryPeerThatMustNotBeTrustedIsRefusedWithTheReason) {
  const struct {
    const char* name;
    ServedCertificate kind;
    const char* logged;
    const char* loggedByHttp = logged;
  } kinds[] = {{"Expired", ServedCertificate::expired, "certificate has expired"},
               {"NotYetValid", ServedCertificate::notYetValid, "certificate is not yet valid"},
               {"WrongHost", ServedCertificate::wrongHost, "refused: hostname mismatch",
                "no alternative certificate subject name matches target host name"},
               {"SelfSigned", ServedCertificate::selfSigned, "refused: self-signed certificate"},
               {"UnknownAuthority", ServedCertificate::unknownAuthority, "refused: unknown authority"},
               {"MissingIntermediate", ServedCertificate::missingIntermediate, "refused: incomplete chain"},
               {"OldProtocol", ServedCertificate::oldProtocol, "protocol too old"}};
  std::vector<Row> rows;
  for (const auto& [name, kind, logged, loggedByHttp] : kinds) {
    rows.push_back(Row{std::string("Http") + name, kind, loggedByHttp, true});
    rows.push_back(Row{std::string("Line") + name, kind, logged, false});
  }
  const auto sites = Make(rows);
  for (const auto& site : sites) site->Connect({}, site->cloud.BaseUrl());
  for (const auto& site : sites) {
    SCOPED_TRACE(site->row.name);
    const bool isHttp = site->row.isHttp;
    ASSERT_TRUE(site->frontEnd->notices.WaitFor(isHttp ? "OnStatus 60702001" : kDisconnected));
    const auto stats = site->cloud.Stats();
    EXPECT_EQ(stats.phoneConnects, isHttp ? 0U : 1U);
    EXPECT_EQ(stats.lines.at(qv_cloud::kDefaultLine).ever, 0U);
    EXPECT_TRUE(Logged(site->Address(isHttp), site->row.logged)) << site->row.logged;
    EXPECT_EQ(site->frontEnd->notices.Count(kStands), 0U);
  }
}

// The first phone's session is cached and leads straight to the line; the second phone has to ask for one.
TEST_F(Tls, TheTrustIsReadForEachConnect) {
  StartCloud();
  ASSERT_TRUE(ConnectToFirstFrame());
  controller->ReleasePhoneConnect();
  reference::SetAuthorityFile(directory / "missing.pem");
  Connect();
  ASSERT_TRUE(frontEnd->notices.WaitFor(kDisconnected, 2));
  EXPECT_EQ(frontEnd->notices.Count(kStands), 0U);
  EXPECT_EQ(Stats().authentications, 1U);
  controller->ReleasePhoneConnect();
  targetId = "phone-2";
  Connect();
  ASSERT_TRUE(frontEnd->notices.WaitFor("OnStatus 60702001"));
  EXPECT_EQ(Stats().phoneConnects, 1U);
}

}  // namespace
}  // namespace end_to_end
