#include "collect_interface/collect_interface.h"
#include "reference/collect_interface/schema.h"
#include "reference/common/settings.h"
#include "tests/support/sql.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/transcribed.h"

namespace collect_interface {
namespace {

using pass_interface::MessageCollect;
using pass_interface::MessageCollectBaseData;
using pass_interface::MessageCollectStatusData;

// Of its SHA-256 the first 16 digits stand in the transcripts.
constexpr char kSessionId[] = "session-id-that-nobody-may-read";

class CollectorTest : public tests::Transcribed<> {
 protected:
  CollectorTest() { reference::SetDataDirectory(directory.path); }
  // The database is let go before its directory is.
  ~CollectorTest() override {
    tests::WriteFile(directory / "nothing.here", "");
    reference::SetDataDirectory(directory / "nothing.here");
    Collector()->DeleteInstanceInfo(1);
  }

  static std::shared_ptr<ICollectInterface> Collector() { return ICollectInterface::GetCollectInstance(false); }

  int Insert() {
    int rowId = 0;
    EXPECT_EQ(Collector()->InsertInstanceInfo(&rowId, "phone-1", kSessionId, 1, "websocket"), 0);
    return rowId;
  }

  std::vector<std::string> Read(const std::string& sql) const { return tests::Sql(directory / kDatabaseFile, sql); }

  tests::TemporaryDirectory directory;
};

std::shared_ptr<MessageCollectStatusData> FullStatus() {
  auto status = std::make_shared<MessageCollectStatusData>();
  status->sessionId = kSessionId;
  status->targetId = "phone-1";
  status->channel = "websocket";
  status->wsDomain = "localhost";
  status->wsPort = "40001";
  status->errorCode = "-5";
  status->statusText = "status";
  status->sdkVersion = "1.13.0";
  status->interfaceVersion = "1.13.1";
  status->playResponseTime = 101;
  status->firstFrameTime = 102;
  status->releaseTime = 103;
  status->connectingCount = 4;
  status->connectingTime = 105;
  status->disconnectedTime = 106;
  status->connectedTime = 107;
  status->connectedFlag = 1;
  status->detailText = "detail";
  status->extraText = "extra";
  status->processName = "host";
  status->milestones = {{"startConnect", 20}, {"recvFirstFrame", 1700000000000}, {"connectSucc", 30}};
  return status;
}

std::shared_ptr<MessageCollect> MessageWith(std::shared_ptr<MessageCollectBaseData> data) {
  auto message = std::make_shared<MessageCollect>();
  message->collectType = 1;
  message->collectStatus = 2;
  message->timestamp = 1700000000001;
  message->tag = "tag";
  message->data = std::move(data);
  return message;
}

TEST_F(CollectorTest, AMessageIsReadBackWithAllItsFieldsAndMilestones) {
  Collector()->SetCollectSdkType("data_interface");
  EXPECT_TRUE(std::filesystem::is_empty(directory.path)) << "the first record makes the file";
  Collector()->ReportMessageCollect(MessageWith(FullStatus()));
  STEP(Read("SELECT * FROM messages"));
  STEP(Read("SELECT * FROM milestones ORDER BY time"));
  // As many as an embedding SDK likes.
  const auto status = FullStatus();
  for (int i = 0; i < 40; ++i) status->milestones.emplace("step " + std::to_string(i), i);
  Collector()->ReportMessageCollect(MessageWith(status));
  STEP(Read("SELECT count(*), sum(time) FROM milestones WHERE name LIKE 'step %' AND message_id = 2"));
}

TEST_F(CollectorTest, AMessageWithoutStatusDataKeepsItsHeaderAndALongTextIsCutBetweenCharacters) {
  auto base = std::make_shared<MessageCollectBaseData>();
  const std::string longest(kMaxTextBytes - 1, 'x');
  base->targetId = longest + "\xc3\xa4";
  Collector()->ReportMessageCollect(nullptr);
  Collector()->ReportMessageCollect(MessageWith(nullptr));
  Collector()->ReportMessageCollect(MessageWith(base));
  EXPECT_EQ(Read("SELECT collect_status, target_id, session FROM messages ORDER BY id"),
            (std::vector<std::string>{"2||", "2|" + longest + "|"}));
}

TEST_F(CollectorTest, AnInstanceRowLivesFromInsertToDelete) {
  const int rowId = Insert();
  EXPECT_GT(rowId, 0);
  const char* const all = "SELECT target_id, session, default_mode, channel FROM instances";
  STEP(Read(all));
  STEP(Collector()->UpdataInstanceSessionId(rowId, "", 0));
  STEP(Read(all));
  STEP(Collector()->DeleteInstanceInfo(rowId));
  STEP(Read(all));
  EXPECT_GT(Insert(), rowId) << "a number must not come back while someone may still hold it";
}

TEST_F(CollectorTest, MisuseAndUnknownRowsAreRefused) {
  int rowId = 7;
  EXPECT_EQ(Collector()->InsertInstanceInfo(nullptr, "t", "s", 1, "c"), -1);
  EXPECT_EQ(Collector()->InsertInstanceInfo(&rowId, nullptr, "s", 1, "c"), -1);
  EXPECT_EQ(Collector()->UpdataInstanceSessionId(999, "s", 1), -1);
  EXPECT_EQ(Collector()->UpdataInstanceSessionId(1, nullptr, 1), -1);
  EXPECT_EQ(Collector()->UpdataInstanceSessionId(1, "s", -1), -1);
  EXPECT_EQ(Collector()->DeleteInstanceInfo(999), -1);
  EXPECT_EQ(rowId, 7);
}

TEST_F(CollectorTest, TheOldestMessagesGoWithTheirMilestones) {
  Collector()->ReportMessageCollect(MessageWith(FullStatus()));
  // The next message is the one that prunes.
  Read("UPDATE sqlite_sequence SET seq = 20479 WHERE name = 'messages'");
  Collector()->ReportMessageCollect(MessageWith(nullptr));
  STEP(Read("SELECT id FROM messages"));
  STEP(Read("SELECT name FROM milestones"));
}

TEST_F(CollectorTest, ACrashIsALineInAFileOfItsOwn) {
  reference::SetDataDirectory(directory / "not/made/yet");
  Collector();
  for (const char* dump : {"first.dmp", static_cast<const char*>(nullptr), "second.dmp"}) {
    ICollectInterface::CoreHappen(dump);
  }
  const auto lines = tests::ReadLines(directory / "not/made/yet/crashes.txt");
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_TRUE(lines[0].starts_with("first.dmp")) << lines[0];
  EXPECT_TRUE(lines[1].starts_with("second.dmp")) << lines[1];
  EXPECT_FALSE(std::filesystem::exists(directory / "not/made/yet" / kDatabaseFile));
}

}  // namespace
}  // namespace collect_interface
