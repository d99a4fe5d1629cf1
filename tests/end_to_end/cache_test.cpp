// When a cached session is used and when it is not.
#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

struct Change {
  const char* name;
  const char* sql;
  bool isHit;
};

class ChangedRow : public EndToEnd, public testing::WithParamInterface<Change> {};

TEST_P(ChangedRow, IsUsedOnlyWhenWholeAndValidForTenMinutes) {
  StartCloud();
  ASSERT_TRUE(ConnectToFirstFrame());
  controller->ReleasePhoneConnect();
  ASSERT_EQ(Sql("session_cache.db", "SELECT count(*) FROM session_cache"), Texts{"1"});
  Sql("session_cache.db", std::string("UPDATE session_cache SET ") + GetParam().sql);

  ASSERT_TRUE(ConnectToFirstFrame());
  EXPECT_EQ(Stats().phoneConnects, GetParam().isHit ? 1U : 2U);
  EXPECT_EQ(Log().find("Hit session cache") != std::string::npos, GetParam().isHit);

  // Whatever was wrong has been replaced by what the service granted.
  controller->ReleasePhoneConnect();
  ASSERT_TRUE(ConnectToFirstFrame());
  EXPECT_EQ(Stats().phoneConnects, GetParam().isHit ? 1U : 2U);
}

// Every change of a row is tried on the cipher itself; one stands for them here.
INSTANTIATE_TEST_SUITE_P(
    All, ChangedRow,
    testing::Values(Change{"Unchanged", "expiry = expiry", true},
                    Change{"ElevenMinutesLeft", "expiry = CAST(strftime('%s') AS INTEGER) * 1000 + 660000", true},
                    Change{"NineMinutesLeft", "expiry = CAST(strftime('%s') AS INTEGER) * 1000 + 540000", false},
                    Change{"Changed", "cipher_text = 'AAAA' || substr(cipher_text, 5)", false},
                    Change{"AnotherKey", "cache_key = cipher_text", false}),
    kNameOf);

struct Caching : EndToEnd {};

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
