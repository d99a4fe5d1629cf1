#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "base/thread_id.h"
#include "reference/base/base_logger.h"
#include "tests/reference/common/temporary_directory.h"

namespace base {
namespace {

using tests::ReadFile;
using tests::ReadLines;

class LoggerTest : public testing::Test {
 protected:
  LoggerTest() { logger.SetLogPath(directory.path.string().c_str()); }

  void Write(int level, const std::string& text, long threadId = 1) {
    logger.WriteLog(level, threadId, "%s", text.c_str());
  }

  std::string Log(const std::string& file = "sdk.log") { return ReadFile(directory / file, std::ios::in); }

  int FilesInDirectory() {
    const std::filesystem::directory_iterator files(directory.path);
    return static_cast<int>(std::distance(begin(files), end(files)));
  }

  tests::TemporaryDirectory directory;
  BaseLogger logger;
};

TEST_F(LoggerTest, LinesFromBeforeTheStartComeFirstAndInOrder) {
  logger.WriteLog(20, 11, "first %d", 1);
  logger.WriteLog(60, 22, "second");
  EXPECT_FALSE(std::filesystem::exists(directory / "sdk.log"));
  logger.StartLog();
  logger.WriteLog(0, 33, "third");
  const auto lines = ReadLines(directory / "sdk.log");
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_TRUE(lines[0].ends_with(" [11] [info] first 1")) << lines[0];
  EXPECT_TRUE(lines[1].ends_with(" [22] [error] second")) << lines[1];
  EXPECT_TRUE(lines[2].ends_with(" [33] [trace] third")) << lines[2];
}

TEST_F(LoggerTest, PastTheBoundOfLinesOrBytesTheFirstAreKeptAndTheOthersCounted) {
  for (std::size_t i = 0; i < WaitingLines::kMaxLines + 7; ++i) Write(20, "line " + std::to_string(i));
  BaseLogger other;
  other.SetLogPath((directory / "other").string().c_str());
  other.WriteLog(20, 1, "%s", std::string(WaitingLines::kMaxBytes, 'x').c_str());
  other.WriteLog(20, 1, "one too many");
  logger.StartLog();
  other.StartLog();
  const auto lines = ReadLines(directory / "sdk.log");
  ASSERT_EQ(lines.size(), WaitingLines::kMaxLines + 1);
  EXPECT_TRUE(lines[WaitingLines::kMaxLines - 1].ends_with("line 999"));
  EXPECT_NE(lines.back().find("7 lines were dropped"), std::string::npos) << lines.back();
  EXPECT_EQ(Log("other/sdk.log").find("one too many"), std::string::npos);
  EXPECT_NE(Log("other/sdk.log").find("1 lines were dropped"), std::string::npos);
}

TEST_F(LoggerTest, LinesBelowTheLevelAreDroppedWaitingOnesToo) {
  Write(0, "early trace");
  logger.SetLogLevel(20);
  logger.StartLog();
  Write(0, "late trace");
  Write(20, "information");
  const auto lines = ReadLines(directory / "sdk.log");
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_TRUE(lines[0].ends_with("information"));
}

TEST_F(LoggerTest, ALongLineStandsWholeAndBreaksNoLine) {
  logger.SetLogSizeSetting(1);
  logger.StartLog();
  const std::string text(100000, 'x');
  Write(20, text + "\nforged\r\tend");
  EXPECT_TRUE(Log().ends_with(text + " forged  end\n"));
}

TEST_F(LoggerTest, FilesKeepToSizeAndCount) {
  logger.SetLogSizeSetting(2);
  logger.SetLogCountSetting(3);
  logger.StartLog();
  for (int i = 0; i < 200; ++i) Write(20, "line " + std::to_string(i) + std::string(60, '.'));
  EXPECT_EQ(FilesInDirectory(), 3);
  for (const char* file : {"sdk.log", "sdk.1.log", "sdk.2.log"}) {
    EXPECT_GT(std::filesystem::file_size(directory / file), 0u) << file;
    EXPECT_LE(std::filesystem::file_size(directory / file), 2048u) << file;
  }
  EXPECT_NE(Log().find("line 199."), std::string::npos);

  logger.SetLogCountSetting(2);
  logger.StartLog();
  EXPECT_EQ(FilesInDirectory(), 2);
}

TEST_F(LoggerTest, TheModeSaysWhetherAStartBeginsANewFileAndAStartTakesOverWhatWasSetSince) {
  tests::WriteFile(directory / "sdk.log", "yesterday\n");
  logger.SetLogModeSetting(0);
  logger.StartLog();
  Write(20, "today");
  logger.SetLogModeSetting(1);
  EXPECT_TRUE(Log().starts_with("yesterday\n")) << Log();
  EXPECT_TRUE(Log().ends_with("today\n")) << Log();

  logger.StartLog();
  Write(20, "later");
  logger.SetLogPath((directory / "below/deeper").string().c_str());
  logger.SetLogName("other");
  Write(20, "before");
  logger.StartLog();
  Write(20, "after");
  EXPECT_TRUE(Log("sdk.1.log").ends_with("today\n")) << Log("sdk.1.log");
  EXPECT_EQ(ReadLines(directory / "sdk.log").size(), 2u) << Log();
  EXPECT_TRUE(Log().ends_with("before\n")) << Log();
  EXPECT_TRUE(Log("below/deeper/other.log").ends_with("after\n"));
}

TEST_F(LoggerTest, ASettingOutsideItsRangeIsNamedAndReplaced) {
  logger.SetLogSizeSetting(0);
  logger.SetLogModeSetting(2);
  logger.SetLogCountSetting(-1);
  logger.SetLogName("../outside");
  logger.StartLog();
  for (const char* complaint :
       {"size setting is 0, allowed is 1 to 1048576; 1024 is used", "mode setting is 2, allowed is 0 to 1; 0 is used",
        "count setting is -1, allowed is 1 to 1000; 5 is used", "\"../outside\""}) {
    EXPECT_NE(Log().find(complaint), std::string::npos) << complaint;
  }
}

TEST_F(LoggerTest, ADirectoryThatCannotBeMadeIsToldOnceAndTheLinesWait) {
  tests::WriteFile(directory / "file", "");
  logger.SetLogPath((directory / "file/below").string().c_str());
  testing::internal::CaptureStderr();
  logger.StartLog();
  Write(20, "waits");
  Write(20, "too");
  const std::string told = testing::internal::GetCapturedStderr();
  EXPECT_NE(told.find("cannot write the log"), std::string::npos) << told;
  EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << told;

  logger.SetLogPath(directory.path.string().c_str());
  logger.StartLog();
  EXPECT_EQ(ReadLines(directory / "sdk.log").size(), 2u);
}

TEST_F(LoggerTest, LinesOfManyThreadsStayWholeAcrossRotationsAndStarts) {
  logger.SetLogSizeSetting(4);
  logger.SetLogCountSetting(100);
  logger.StartLog();
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([this, thread] {
      for (int i = 0; i < 100; ++i) Write(20, "<" + std::string(100, static_cast<char>('a' + thread)) + ">", GetTid());
    });
  }
  logger.StartLog();
  for (std::thread& thread : threads) thread.join();
  std::size_t lines = 0;
  for (const auto& file : std::filesystem::directory_iterator(directory.path)) {
    for (const std::string& line : ReadLines(file)) {
      const std::size_t open = line.find('<');
      ASSERT_NE(open, std::string::npos) << line;
      EXPECT_EQ(line.substr(open), "<" + std::string(100, line[open + 1]) + ">");
      ++lines;
    }
  }
  EXPECT_EQ(lines, 400u);
}

TEST(ThreadIdTest, EveryThreadHasItsOwn) {
  long other = 0;
  std::thread([&] { other = GetTid(); }).join();
  EXPECT_NE(GetTid(), other);
}

}  // namespace
}  // namespace base
