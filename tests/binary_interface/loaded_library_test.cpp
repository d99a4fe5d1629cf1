// The shared library as it ships, loaded at run time with nothing of it linked in.
#include "tests/binary_interface/loaded_library.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/binary_interface/recording_collector.h"

namespace {

TEST(LoadedLibrary, LoadingRegistersTheSdkTypeOnceAndNothingElseDoes) {
  const std::vector<std::string> once{"data_interface"};
  ASSERT_TRUE(RegisteredTypes().empty());
  {
    const tests::LoadedLibrary first(LIBRARY_FILE);
    EXPECT_EQ(RegisteredTypes(), once);
    const tests::LoadedLibrary second(LIBRARY_FILE);
    std::thread([] {}).join();
    EXPECT_EQ(RegisteredTypes(), once);
  }
  const tests::LoadedLibrary again(LIBRARY_FILE);
  EXPECT_EQ(RegisteredTypes(), once) << "a library that was freed is still there";
}

}  // namespace
