#include <algorithm>
#include <map>
#include <thread>

#include "base/thread_id.h"
#include "reference/base/base_logger.h"
#include "tests/support/transcribed.h"

namespace base {
namespace {

using Texts = std::vector<std::string>;

class LoggerTest : public tests::Transcribed<> {
 protected:
  LoggerTest() { logger.SetLogPath(directory.path.string().c_str()); }

  void Write(int level, const std::string& text, long threadId = 1) {
    logger.WriteLog(level, threadId, "%s", text.c_str());
  }

  // Each from its thread on, behind the time.
  Texts Lines(const std::string& file = "sdk.log") const {
    Texts lines = tests::ReadLines(directory / file);
    for (std::string& line : lines) line.erase(0, line.find('['));
    return lines;
  }

  std::ptrdiff_t FilesInDirectory() const {
    const std::filesystem::directory_iterator files(directory.path);
    return std::distance(begin(files), end(files));
  }

  tests::TemporaryDirectory directory;
  BaseLogger logger;
};

TEST_F(LoggerTest, LinesFromBeforeTheStartComeFirstAndThoseBelowTheLevelNever) {
  logger.WriteLog(20, 11, "first %d", 1);
  Write(0, "early");
  Write(60, "second", 22);
  EXPECT_EQ(FilesInDirectory(), 0);
  logger.SetLogLevel(20);
  logger.StartLog();
  Write(0, "late");
  logger.SetLogLevel(0);
  Write(0, "third", 33);
  STEP(Lines());
}

TEST_F(LoggerTest, PastTheBoundOfLinesOrBytesTheFirstAreKeptAndTheOthersCounted) {
  const struct {
    std::size_t bytes, kept, dropped;
  } cases[] = {{0, WaitingLines::kMaxLines, 7}, {WaitingLines::kMaxBytes - 1, 1, 2}};
  for (const auto& [bytes, kept, dropped] : cases) {
    BaseLogger full;
    const std::string name = std::to_string(bytes);
    full.SetLogPath((directory / name).string().c_str());
    for (std::size_t i = 0; i < kept + dropped; ++i) {
      full.WriteLog(20, 1, "%s%u", std::string(bytes, ' ').c_str(), static_cast<unsigned>(i));
    }
    full.StartLog();
    const Texts lines = Lines(name + "/sdk.log");
    ASSERT_EQ(lines.size(), kept + 1);
    EXPECT_TRUE(lines[kept - 1].ends_with(" " + std::to_string(kept - 1)));
    EXPECT_NE(lines[kept].find(std::to_string(dropped) + " lines were dropped"), std::string::npos) << lines[kept];
  }
}

TEST_F(LoggerTest, ALongLineStandsWholeAndBreaksNoLine) {
  logger.SetLogSizeSetting(1);
  logger.StartLog();
  const std::string text(100000, 'x');
  Write(20, text + "\nforged\r\tend");
  EXPECT_EQ(Lines(), Texts{"[1] [info] " + text + " forged  end"});
}

TEST_F(LoggerTest, FilesKeepToSizeAndCount) {
  logger.SetLogSizeSetting(2);
  logger.SetLogCountSetting(3);
  logger.StartLog();
  for (int i = 0; i < 200; ++i) Write(20, std::string(60, '.') + std::to_string(i));
  EXPECT_EQ(FilesInDirectory(), 3);
  for (const char* file : {"sdk.log", "sdk.1.log", "sdk.2.log"}) {
    EXPECT_GT(std::filesystem::file_size(directory / file), 0U) << file;
    EXPECT_LE(std::filesystem::file_size(directory / file), 2048U) << file;
  }
  EXPECT_TRUE(Lines().back().ends_with(".199"));

  logger.SetLogCountSetting(2);
  logger.StartLog();
  EXPECT_EQ(FilesInDirectory(), 2);
}

TEST_F(LoggerTest, TheModeSaysWhetherAStartBeginsANewFileAndAStartTakesOverWhatWasSetSince) {
  tests::WriteFile(directory / "sdk.log", "[yesterday]\n");
  logger.SetLogModeSetting(0);
  logger.StartLog();
  Write(20, "today");
  logger.SetLogModeSetting(1);
  STEP(Lines());

  logger.StartLog();
  Write(20, "later");
  logger.SetLogPath((directory / "below/deeper").string().c_str());
  logger.SetLogName("other");
  Write(20, "before");
  logger.StartLog();
  Write(20, "after");
  STEP(Lines("sdk.1.log"));
  STEP(Lines());
  STEP(Lines("below/deeper/other.log"));
}

TEST_F(LoggerTest, ASettingOutsideItsRangeIsNamedAndReplaced) {
  logger.SetLogSizeSetting(0);
  logger.SetLogModeSetting(2);
  logger.SetLogCountSetting(-1);
  logger.SetLogName("../outside");
  logger.StartLog();
  // Each from this thread.
  for (const std::string& line : Lines()) Indent(line.substr(line.find(']') + 1));
}

TEST_F(LoggerTest, ADirectoryThatCannotBeMadeIsToldOnceAndTheLinesWait) {
  tests::WriteFile(directory / "file", "");
  logger.SetLogPath((directory / "file/below").string().c_str());
  testing::internal::CaptureStderr();
  logger.StartLog();
  Write(20, "waits");
  const std::string told = testing::internal::GetCapturedStderr();
  EXPECT_NE(told.find("cannot write the log"), std::string::npos) << told;
  EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << told;

  logger.SetLogPath(directory.path.string().c_str());
  logger.StartLog();
  STEP(Lines());
}

TEST_F(LoggerTest, LinesOfManyThreadsStayWholeAcrossRotationsAndStarts) {
  logger.SetLogSizeSetting(4);
  logger.SetLogCountSetting(100);
  logger.StartLog();
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([this] {
      for (int i = 0; i < 100; ++i) Write(20, std::string(100, 'x'), GetTid());
    });
  }
  logger.StartLog();
  for (std::thread& thread : threads) thread.join();
  std::map<std::string, int> lines;
  for (const auto& file : std::filesystem::directory_iterator(directory.path)) {
    for (const std::string& line : Lines(file.path().filename().string())) ++lines[line];
  }
  EXPECT_EQ(lines.size(), 4U) << "each thread has a number of its own";
  for (const auto& [line, count] : lines) {
    EXPECT_TRUE(line.ends_with("] [info] " + std::string(100, 'x'))) << line;
    EXPECT_EQ(count, 100) << line;
  }
}

}  // namespace
}  // namespace base
