// A process that saves and loads without pause ends at any moment, with nothing closed or flushed, and loses nothing
// that it was told is stored. This program is that process, too, when its argument is the data directory.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>
#include <thread>

#include "database_interface/database_interface.h"
#include "reference/common/settings.h"
#include "tests/support/temporary_directory.h"

namespace disk {
namespace {

const char* thisProgram = nullptr;

constexpr std::int64_t kKeys = 7;
// The year 2100.
constexpr std::int64_t kExpiry = 4102444800000;
constexpr const char* kAcknowledged = "acknowledged.txt";

std::string Key(std::int64_t number) {
  return "key-" + std::to_string(number % kKeys);
}

// Past a page of the database, so that a row is written in several pieces.
std::string Text(std::int64_t number) {
  std::string text = std::to_string(number) + ":";
  while (text.size() < 6000) text += std::to_string(number * 7919 + static_cast<std::int64_t>(text.size())) + ";";
  return text;
}

// The number of the row that is stored under the key of that number; -1 when there is none, -2 when it is not whole.
std::int64_t LoadNumber(std::int64_t number) {
  std::string text;
  const auto database = database_interface::IDatabaseInterface::GetDbInstance();
  if (database->LoadSessionCache(Key(number).c_str(), 0, text) < 1) return -1;
  const std::int64_t stored = std::atoll(text.c_str());
  return text == Text(stored) && Key(stored) == Key(number) ? stored : -2;
}

std::atomic<int> rowsOfThisProcess{0};

// Anywhere in the work of a row, not always at the same distance from its acknowledgement.
[[noreturn]] void EndAbruptly() {
  using std::chrono::steady_clock;
  std::mt19937 random(std::random_device{}());
  const int enough = std::uniform_int_distribution<int>(1, 15)(random);
  const auto latest = steady_clock::now() + std::chrono::seconds(20);
  while (rowsOfThisProcess < enough) {
    if (steady_clock::now() > latest) std::_Exit(EXIT_FAILURE);
    std::this_thread::yield();
  }
  const auto moment =
      steady_clock::now() + std::chrono::microseconds(std::uniform_int_distribution<int>(0, 2000)(random));
  while (steady_clock::now() < moment) continue;
  std::_Exit(EXIT_SUCCESS);
}

// Returns when a row cannot be stored and loaded.
int WriteWithoutPause(const std::filesystem::path& directory) {
  reference::SetDataDirectory(directory);
  std::int64_t number = 0;
  for (std::int64_t key = 0; key < kKeys; ++key) number = std::max(number, LoadNumber(key));
  std::ofstream acknowledged(directory / kAcknowledged, std::ios::binary | std::ios::app);
  const auto database = database_interface::IDatabaseInterface::GetDbInstance();
  std::thread(EndAbruptly).detach();
  do {
    ++number;
    if (database->SaveSessionCache(Key(number).c_str(), Text(number).c_str(), kExpiry) != 0) return EXIT_FAILURE;
    // In the operating system's hands at once.
    acknowledged << number << std::endl;
    ++rowsOfThisProcess;
  } while (LoadNumber(number) == number);
  return EXIT_FAILURE;
}

TEST(AKilledProcess, LeavesEveryRowWholeAndEveryAcknowledgedOneStored) {
  const tests::TemporaryDirectory directory;
  const auto file = directory / kAcknowledged, notADirectory = directory / "nothing.here";
  tests::WriteFile(file, "");
  tests::WriteFile(notADirectory, "");
  std::size_t rows = 0;

  for (int kill = 0; kill < KILLS; ++kill) {
    SCOPED_TRACE("kill " + std::to_string(kill));
    const std::uintmax_t begin = std::filesystem::file_size(file);
    ASSERT_EQ(std::system((thisProgram + (" " + directory.path.string())).c_str()), 0) << "the writer does not get on";

    reference::SetDataDirectory(directory.path);
    for (std::int64_t key = 0; key < kKeys; ++key) ASSERT_NE(LoadNumber(key), -2) << "a row is not whole";
    const std::string all = tests::ReadFile(file);
    // A row of the same key that came later, acknowledged or not, has taken an earlier one's place. A line that was
    // being written at the death counts for nothing.
    for (std::size_t at = begin, stop; (stop = all.find('\n', at)) != std::string::npos; at = stop + 1, ++rows) {
      const std::int64_t number = std::atoll(all.c_str() + at);
      ASSERT_GE(LoadNumber(number), number) << "an acknowledged row is lost";
    }
    if (!all.ends_with('\n')) std::ofstream(file, std::ios::binary | std::ios::app) << '\n';
    // Lets go of the database.
    reference::SetDataDirectory(notADirectory);
    ASSERT_EQ(LoadNumber(0), -1);
  }
  std::cout << KILLS << " kills, " << rows << " acknowledged rows" << std::endl;
}

}  // namespace
}  // namespace disk

int main(int argumentCount, char** arguments) {
  testing::InitGoogleTest(&argumentCount, arguments);
  if (argumentCount == 2) return disk::WriteWithoutPause(arguments[1]);
  disk::thisProgram = arguments[0];
  return RUN_ALL_TESTS();
}
