// Every seed of the fuzz targets, every truncation of it, and every single flipped bit.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <utility>

#include "session/session_cipher.h"
#include "tests/fuzz/checks.h"

namespace {

using Check = bool (*)(std::string_view input);

// Says how many changed texts were still taken.
std::size_t TryChanges(const char* what, const std::string& original, Check check) {
  std::size_t tried = 0, taken = 0;
  const auto attempt = [&](const std::string& changed) {
    ++tried;
    if (check(changed)) ++taken;
  };
  for (std::size_t length = 0; length < original.size(); ++length) attempt(original.substr(0, length));
  for (std::size_t bit = 0; bit < original.size() * 8; ++bit) {
    std::string flipped = original;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
    attempt(flipped);
  }
  std::cout << what << ": " << tried << " changes tried, " << taken << " still whole\n";
  return taken;
}

TEST(Flip, WhatIsChangedIsRefusedOrStillWhole) {
  for (const auto& [name, check] : {std::pair<const char*, Check>("cache_json", &fuzz::CheckCacheJson),
                                    {"formats", &fuzz::CheckFormats},
                                    {"http_answer", &fuzz::CheckHttpAnswer},
                                    {"signalling", &fuzz::CheckSignalling}}) {
    std::size_t seeds = 0;
    for (const auto& seed : std::filesystem::directory_iterator(std::filesystem::path(FUZZ_CORPUS) / name)) {
      std::ifstream stream(seed.path(), std::ios::binary);
      const std::string original((std::istreambuf_iterator<char>(stream)), {});
      EXPECT_TRUE(check(original)) << seed.path();
      TryChanges(name, original, check);
      ++seeds;
    }
    EXPECT_GT(seeds, 0U) << name;
  }
}

TEST(Flip, AChangedCacheRowIsAlwaysRefused) {
  const std::string json = R"({"sessionId":"s-1","streamInfo":{"webSocketDomain":"w","webSocketPort":443}})";
  const std::string row = qv_data_interface::EncryptSessionText(json.data(), static_cast<std::int32_t>(json.size()));
  EXPECT_TRUE(fuzz::CheckCacheRow(row));
  EXPECT_EQ(TryChanges("cache row", row, &fuzz::CheckCacheRow), 0U);
}

}  // namespace
