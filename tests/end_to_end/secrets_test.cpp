// No secret leaves the process but to the cloud. The fixture searches after every story of this folder; here are the
// stories made for it, and the proof that the search finds what it is for.
#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

struct Secrets : EndToEnd {
  // Everything that a connection may go through.
  void LiveThroughEverything() {
    qv_cloud::Faults faults{.errorCode = qv_cloud::kSessionExpired, .errorAfterFrames = 3, .dropAfterFrames = 6};
    StartCloud(faults);
    ASSERT_TRUE(ConnectToFirstFrame());
    ASSERT_TRUE(frontEnd->notices.WaitFor(kFirstFrame, 2));
    EXPECT_EQ(controller->SendInReq8("text"), 0);
    EXPECT_EQ(controller->ChangeIsp(qv_cloud::kLineA), 0);
    ASSERT_TRUE(frontEnd->notices.WaitFor(kFirstFrame, 3));
    faults.dropAfterFrames = 0;
    faults.refuseRefresh = 60301007;
    cloud->SetFaults(faults);
    ASSERT_TRUE(frontEnd->notices.WaitFor("OnStatus(60301007"));
    controller->ReleasePhoneConnect();
    ASSERT_TRUE(ConnectToFirstFrame());
    controller->ReleasePhoneConnect();
    faults.refuseConnect = 60301005;
    cloud->SetFaults(faults);
    credential1 += "-other";
    Connect();
    ASSERT_TRUE(frontEnd->notices.WaitFor("OnStatus(60301005"));
    controller->ReleasePhoneConnect();
    cloud->SetFaults({});
    ASSERT_TRUE(ConnectToFirstFrame());
  }

  [[noreturn]] void CrashWhileConnected() {
    LiveThroughEverything();
    if (HasFailure()) std::exit(EXIT_FAILURE);
    std::cerr << "\ndirectory " << directory.string() << "\ndirectory " << LogDirectory().string() << std::endl;
    std::abort();
  }

  // What the crashed process has left: its standard error, and the directories that stand in it.
  bool NothingIsLeftIn(const std::string& standardError) const {
    Texts found = search.InText("standard error", standardError);
    Texts files;
    std::istringstream lines(standardError);
    for (std::string line; std::getline(lines, line);) {
      if (!line.starts_with("directory ")) continue;
      const std::filesystem::path left = line.substr(line.find(' ') + 1);
      for (const auto& entry : std::filesystem::directory_iterator(left)) {
        if (entry.file_size() > 0) files.push_back(entry.path().filename().string());
      }
      for (const std::string& leak : search.InFiles(left)) found.push_back(leak);
      std::filesystem::remove_all(left);
    }
    EXPECT_THAT(found, IsEmpty());
    for (const char* part : {"QV_DATA.log", ".dmp", "session_cache.db", "collector.db", "-wal", "crashes.txt"}) {
      EXPECT_THAT(files, Contains(HasSubstr(part)));
    }
    return true;
  }
};

TEST_F(Secrets, NoneIsInAFileOrOnStandardErrorAfterACrash) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(CrashWhileConnected(),
               testing::Truly([this](const std::string& standardError) { return NothingIsLeftIn(standardError); }));
}

// The phone's name is none, and stands in many lines and rows.
TEST_F(Secrets, ANameThatIsNoSecretIsFoundInTheLogAndTheCollector) {
  targetId = "phone/with+a name";
  LiveThroughEverything();
  const SecretSearch name({targetId});
  EXPECT_THAT(name.InFiles(LogDirectory()), Contains(HasSubstr("QV_DATA.log")));
  EXPECT_THAT(name.InFiles(directory), Contains(HasSubstr("collector.db")));
}

TEST_F(Secrets, APlantedOneIsFoundInEachForm) {
  constexpr char kSecret[] = "a/b+c d\xF0-~0";
  for (const char* planted :
       {kSecret, "YS9iK2MgZPAtfjA=", "MWEvYitjIGTwLX4wMg==", "MTJhL2IrYyBk8C1+MDEyMw==", "612F622B632064F02D7E30",
        "612f622b632064f02d7e30", "a%2Fb%2Bc%20d%F0-~0", "a%2fb%2bc%20d%f0-~0"}) {
    std::ofstream(directory / "planted", std::ios::binary) << "before" << planted << "behind";
    EXPECT_THAT(SecretSearch({kSecret}).InFiles(directory), Not(IsEmpty())) << planted;
  }
  std::ofstream(directory / "planted", std::ios::binary) << "before" << kSecret + 1 << "behind";
  EXPECT_THAT(SecretSearch({kSecret}).InFiles(directory), IsEmpty());
}

}  // namespace
}  // namespace end_to_end
