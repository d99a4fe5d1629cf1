// From milestones to the drawing, and what the cloud says on the way.
#include "tools/qv_connect/waterfall.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tools/qv_connect/cloud_file.h"
#include "tools/qv_connect/console.h"

namespace qv_connect {
namespace {

using testing::HasSubstr;

Milestones WholeConnection() {
  return {{"startGetInstanceInfo", 1000},
          {"endGetInstanceInfo", 1040},
          {"startConnect", 1040},
          {"dnsParseSucc", 1041},
          {"connectSucc", 1060},
          {"startAuth", 1060},
          {"onAuthR", 1070},
          {"sendPlay", 1070},
          {"onPlayR", 1075},
          {"recvFirstFrame", 1080}};
}

std::string Written(const Milestones& milestones) {
  std::ostringstream text;
  for (const Span& span : SpansOf(milestones)) {
    text << span.name << " " << span.startMs << "+" << span.durationMs << "; ";
  }
  return text.str();
}

TEST(Waterfall, ItsSpansCountFromTheBeginAndOneWithAMissingMilestoneOrATimeThatRunsBackwardsIsLeftOut) {
  Milestones milestones = WholeConnection();
  EXPECT_EQ(Written(milestones),
            "phone-connect 0+40; resolve the name 40+1; TCP, TLS, WebSocket 41+19; authentication 60+10; "
            "choose the format 70+0; play 70+5; first frame 75+5; ");
  EXPECT_EQ(TotalMs(SpansOf(milestones)), 80);
  milestones.erase("onAuthR");
  milestones["onPlayR"] = 1069;
  EXPECT_EQ(Written(milestones),
            "phone-connect 0+40; resolve the name 40+1; TCP, TLS, WebSocket 41+19; first frame 69+11; ");
  milestones.erase("startGetInstanceInfo");
  EXPECT_EQ(Written(milestones), "");
}

TEST(Waterfall, BarsBeginWhereTheSpanDoesAndFillTheWidth) {
  DrawStyle style;
  style.columns = 42 + 10;  // ten columns of bars
  const std::vector<Span> spans = {{"first", 0, 40}, {"second", 40, 40}, {"moment", 80, 0}};
  EXPECT_EQ(DrawWaterfall("Title", spans, 80, style),
            "Title\n"
            "  first                   0 ms  #####          40 ms\n"
            "  second                 40 ms       #####     40 ms\n"
            "  moment                 80 ms           |      0 ms\n");
}

TEST(Waterfall, NoLineIsWiderThanTheTerminalWhateverTheTimes) {
  DrawStyle style;
  style.columns = 60;
  const std::vector<Span> spans = {{"past the scale", 5000, 9000}, {"a", 0, 99999}, {"b", 99999, 0}, {"c", 33, 33}};
  std::istringstream lines(DrawWaterfall("T", spans, 100, style));
  std::string line;
  std::getline(lines, line);
  while (std::getline(lines, line)) EXPECT_EQ(line.size(), 60U) << line;
}

TEST(Waterfall, BlocksForPartsOfAColumnAndColourAreThereWhenAskedForOnly) {
  DrawStyle style;
  style.columns = 42 + 10;
  EXPECT_EQ(DrawWaterfall("T", {{"a", 0, 15}}, 100, style).find('\033'), std::string::npos);
  style.utf8 = true;
  EXPECT_THAT(DrawWaterfall("T", {{"a", 0, 15}}, 100, style), HasSubstr("  \u2588\u258c             15 ms\n"));
  style.colour = true;
  EXPECT_THAT(DrawWaterfall("T", {{"a", 0, 15}}, 100, style), HasSubstr("\033[36m"));
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
