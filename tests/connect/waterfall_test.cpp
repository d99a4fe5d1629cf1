// From milestones to the drawing, and what the cloud says on the way.
#include "tools/qv_connect/waterfall.h"

#include <sstream>

#include "tests/support/transcribed.h"
#include "tools/qv_connect/cloud_file.h"
#include "tools/qv_connect/console.h"

namespace qv_connect {
namespace {

struct Waterfall : tests::Transcribed<> {
  void Draw(const std::vector<Span>& spans, std::int64_t scaleMs) {
    Say(DrawWaterfall("A width of " + std::to_string(style.columns), spans, scaleMs, style));
  }

  DrawStyle style{42 + 10};  // ten columns of bars
};

TEST_F(Waterfall, ItsSpansCountFromTheBeginAndOneWithAMissingMilestoneOrATimeThatRunsBackwardsIsLeftOut) {
  Milestones milestones = {{"startGetInstanceInfo", 1000},
                           {"endGetInstanceInfo", 1040},
                           {"startConnect", 1040},
                           {"dnsParseSucc", 1041},
                           {"connectSucc", 1060},
                           {"startAuth", 1060},
                           {"onAuthR", 1070},
                           {"sendPlay", 1070},
                           {"onPlayR", 1075},
                           {"recvFirstFrame", 1080}};
  Draw(SpansOf(milestones), TotalMs(SpansOf(milestones)));
  milestones.erase("onAuthR");
  milestones["onPlayR"] = 1069;
  Draw(SpansOf(milestones), 80);
  milestones.erase("startGetInstanceInfo");
  Draw(SpansOf(milestones), 80);
}

TEST_F(Waterfall, BarsBeginWhereTheSpanDoesAndNoLineIsWiderThanTheTerminal) {
  Draw({{"first", 0, 40}, {"second", 40, 40}, {"moment", 80, 0}}, 80);
  style.columns = 60;
  Draw({{"past the scale", 5000, 9000}, {"a", 0, 99999}, {"b", 99999, 0}, {"c", 33, 33}}, 100);
}

TEST_F(Waterfall, BlocksForPartsOfAColumnAndColourAreThereWhenAskedForOnly) {
  Draw({{"a", 0, 15}}, 100);
  style.utf8 = true;
  Draw({{"a", 0, 15}}, 100);
  style.colour = true;
  Draw({{"a", 0, 15}}, 100);
}

TEST(CloudFile, IsReadyOnlyAfterTheAddressAndTheWordReady) {
  std::istringstream whole("base-url https://localhost:4000\r\nca-file /a path/ca.pem\nline 1 4001\nready\n");
  const CloudFile cloud = ParseCloudFile(whole);
  EXPECT_TRUE(cloud.ready);
  EXPECT_EQ(cloud.baseUrl, "https://localhost:4000");
  EXPECT_EQ(cloud.caFile, "/a path/ca.pem");
  for (const char* text : {"base-url https://localhost:4000\n", "ready\n", ""}) {
    std::istringstream stream(text);
    EXPECT_FALSE(ParseCloudFile(stream).ready) << text;
  }
}

TEST(Console, TextOfTheCloudCannotSteerTheTerminal) {
  EXPECT_EQ(Printable("a\033[2Jb\nc\x7f"), "a?[2Jb?c?");
  EXPECT_EQ(Printable("\u00e9\u009b31m"), "\u00e9??31m");
}

}  // namespace
}  // namespace qv_connect
