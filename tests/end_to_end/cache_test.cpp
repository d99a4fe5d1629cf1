// When a cached session is used and when it is not.
#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

struct Caching : EndToEnd {};

// Every change of a row is tried on the cipher itself; one stands for them here.
TEST_F(Caching, ARowIsUsedOnlyWhenWholeAndValidForTenMinutesAndOtherwiseReplaced) {
  StartCloud();
  std::uint64_t requests = 0;
  for (const auto& [change, isHit] : {std::pair{"expiry = expiry", true},
                                      {"expiry = CAST(strftime('%s') AS INTEGER) * 1000 + 660000", true},
                                      {"expiry = CAST(strftime('%s') AS INTEGER) * 1000 + 540000", false},
                                      {"cipher_text = 'AAAA' || substr(cipher_text, 5)", false},
                                      {"cache_key = cipher_text", false}}) {
    SCOPED_TRACE(change);
    targetId = "phone-" + std::to_string(++requests);
    ASSERT_TRUE(ConnectToFirstFrame());
    ASSERT_EQ(Sql("session_cache.db", "SELECT count(*) FROM session_cache"), Texts{"1"});
    Sql("session_cache.db", std::string("UPDATE session_cache SET ") + change);
    if (!isHit) ++requests;
    for (int connects = 0; connects < 2; ++connects) {
      controller->ReleasePhoneConnect();
      ASSERT_TRUE(ConnectToFirstFrame());
      EXPECT_EQ(Stats().phoneConnects, requests);
      EXPECT_EQ(Log().find("[" + targetId + "] Hit session cache") != std::string::npos, isHit || connects > 0);
    }
    controller->ReleasePhoneConnect();
    Sql("session_cache.db", "DELETE FROM session_cache");
  }
}

TEST_F(Caching, ASessionThatTheServiceGrantsForLessThanTenMinutesIsNotUsedAgain) {
  qv_cloud::CloudOptions options;
  options.sessionValidity = std::chrono::minutes(9);
  StartCloud(options);
  ASSERT_TRUE(ConnectToFirstFrame());
  controller->ReleasePhoneConnect();
  ASSERT_TRUE(ConnectToFirstFrame());
  EXPECT_EQ(Stats().phoneConnects, 2U);
}

}  // namespace
}  // namespace end_to_end
