// Every seed of the fuzz targets, every truncation of it, and every single flipped bit.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "session/session_cipher.h"
#include "tests/fuzz/checks.h"

namespace {

using Check = bool (*)(std::string_view input);

struct Counts {
  std::size_t tried = 0;
  std::size_t taken = 0;
};

void TryChanges(const std::string& original, Check check, Counts& counts) {
  const auto attempt = [&](const std::string& changed) {
    ++counts.tried;
    if (check(changed)) ++counts.taken;
  };
  for (std::size_t length = 0; length < original.size(); ++length) attempt(original.substr(0, length));
  for (std::size_t bit = 0; bit < original.size() * 8; ++bit) {
    std::string flipped = original;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
    attempt(flipped);
  }
}

void Print(const char* what, const Counts& counts) {
  std::cout << what << ": " << counts.tried << " changes tried, " << counts.taken << " still whole\n";
}

TEST(Flip, WhatIsChangedIsRefusedOrStillWhole) {
  const struct {
    const char* name;
    Check check;
  } targets[] = {{"cache_json", &fuzz::CheckCacheJson},
                 {"formats", &fuzz::CheckFormats},
                 {"http_answer", &fuzz::CheckHttpAnswer},
                 {"signalling", &fuzz::CheckSignalling}};
  for (const auto& target : targets) {
    Counts counts;
    for (const auto& seed : std::filesystem::directory_iterator(std::filesystem::path(FUZZ_CORPUS) / target.name)) {
      std::ifstream stream(seed.path(), std::ios::binary);
      const std::string original((std::istreambuf_iterator<char>(stream)), {});
      EXPECT_TRUE(target.check(original)) << seed.path();
      TryChanges(original, target.check, counts);
    }
    EXPECT_GT(counts.tried, 100U);
    Print(target.name, counts);
  }
}

TEST(Flip, AChangedCacheRowIsAlwaysRefused) {
  const std::string json = R"({"sessionId":"s-1","streamInfo":{"webSocketDomain":"w","webSocketPort":443}})";
  const std::string row = qv_data_interface::EncryptSessionText(json.data(), static_cast<std::int32_t>(json.size()));
  EXPECT_TRUE(fuzz::CheckCacheRow(row));
  Counts counts;
  TryChanges(row, &fuzz::CheckCacheRow, counts);
  EXPECT_EQ(counts.taken, 0U);
  Print("cache row", counts);
}

}  // namespace
