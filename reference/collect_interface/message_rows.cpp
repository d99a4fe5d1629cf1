#include "reference/collect_interface/message_rows.h"

#include "reference/collect_interface/schema.h"
#include "reference/collect_interface/session_digest.h"

namespace collect_interface {
namespace {

using pass_interface::MessageCollectBaseData;
using pass_interface::MessageCollectStatusData;
using reference::sqlite::Connection;
using reference::sqlite::Rows;
using Milestones = decltype(MessageCollectStatusData::milestones);

constexpr std::int64_t kMessagesBetweenPrunes = 256;
// So many statements are prepared at most.
constexpr int kMilestonesAtOnce = 16;

constexpr char kInsertMessage[] = R"(
  INSERT INTO messages (
    sdk_type, collect_type, collect_status, default_mode, timestamp, tag, session, target_id, channel, ws_domain,
    ws_port, error_code, status_text, sdk_version, interface_version, play_response_time, first_frame_time,
    release_time, connecting_count, connecting_time, disconnected_time, connected_time, connected_flag, detail_text,
    extra_text, process_name)
  VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17, ?18, ?19, ?20, ?21, ?22, ?23,
    ?24, ?25, ?26)
)";

MessageCollectStatusData StatusOf(const MessageCollectBaseData* data) {
  if (data == nullptr) return {};
  if (const auto* status = dynamic_cast<const MessageCollectStatusData*>(data)) return *status;
  MessageCollectStatusData status;
  status.sessionId = data->sessionId;
  status.targetId = data->targetId;
  return status;
}

// With one statement for many of them, which takes half the time of one each.
void InsertMilestones(Connection& database, std::int64_t messageId, const Milestones& milestones) {
  for (auto next = milestones.begin(); next != milestones.end();) {
    std::string sql = "INSERT OR REPLACE INTO milestones (message_id, name, time) VALUES ";
    const auto begin = next;
    for (int count = 0; count < kMilestonesAtOnce && next != milestones.end(); ++count, ++next) {
      sql += count == 0 ? "(?1, ?, ?)" : ", (?1, ?, ?)";
    }
    const auto insert = [&](Rows& rows) {
      int index = 1;
      for (auto each = begin; each != next; ++each) {
        rows.Bind(++index, Bounded(each->first));
        rows.Bind(++index, each->second);
      }
      rows.Next();
    };
    database.Query(sql.c_str(), insert, messageId);
  }
}

}  // namespace

std::string_view Bounded(std::string_view text) {
  if (text.size() <= kMaxTextBytes) return text;
  std::size_t end = kMaxTextBytes;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
  return text.substr(0, end);
}

void InsertMessage(Connection& database, const pass_interface::MessageCollect& message, std::string_view sdkType) {
  const MessageCollectStatusData status = StatusOf(message.data.get());
  database.Run(kInsertMessage, Bounded(sdkType), message.collectType, message.collectStatus, message.defaultMode,
               message.timestamp, Bounded(message.tag), SessionDigest(status.sessionId), Bounded(status.targetId),
               Bounded(status.channel), Bounded(status.wsDomain), Bounded(status.wsPort), Bounded(status.errorCode),
               Bounded(status.statusText), Bounded(status.sdkVersion), Bounded(status.interfaceVersion),
               status.playResponseTime, status.firstFrameTime, status.releaseTime, status.connectingCount,
               status.connectingTime, status.disconnectedTime, status.connectedTime, status.connectedFlag,
               Bounded(status.detailText), Bounded(status.extraText), Bounded(status.processName));
  const std::int64_t id = database.LastRowId();
  InsertMilestones(database, id, status.milestones);
  if (id % kMessagesBetweenPrunes == 0) database.Run("DELETE FROM messages WHERE id <= ?1", id - kMaxMessages);
}

}  // namespace collect_interface
