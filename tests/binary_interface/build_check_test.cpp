// What a host learns from the library's file before it loads it.
#include "qv_data_interface/build_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

using qv_data_interface::BuildMismatch;
using testing::HasSubstr;

std::string Mismatch(const std::string& file) {
  std::istringstream stream(file);
  return BuildMismatch(stream);
}

TEST(BuildCheck, TheLibraryAsItShipsGoesWithAProgramOfTheSameBuild) {
  std::ifstream library(LIBRARY_FILE, std::ios::binary);
  EXPECT_EQ(BuildMismatch(library), "");
}

TEST(BuildCheck, ALibraryOfAnotherBuildIsNamedBesideThisProgram) {
  const std::string text = Mismatch(std::string("\x7f"
                                                "ELF\0\0",
                                                6) +
                                    QV_BUILD_MARK + "some other compiler" + '\0' + "rest");
  EXPECT_THAT(text, HasSubstr("<some other compiler>"));
  EXPECT_THAT(text, HasSubstr("<" QV_BUILD_IDENTITY ">"));
}

TEST(BuildCheck, AFileThatIsNoSuchLibraryIsRefused) {
  EXPECT_THAT(Mismatch("some text"), HasSubstr("no qv_data_interface library"));
  EXPECT_NE(Mismatch(QV_BUILD_MARK), "") << "cut off behind the mark";
  std::ifstream missing("no such file", std::ios::binary);
  EXPECT_NE(BuildMismatch(missing), "");
}

}  // namespace
