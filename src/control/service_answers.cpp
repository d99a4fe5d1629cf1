// The HTTP service's answers to phone-connect and refresh-session. Run on the service's thread.
#include "control/data_control.h"
#include "database_interface/database_interface.h"
#include "qv_data_interface/result_codes.h"
#include "session/instance_info_codec.h"
#include "session/session_cipher.h"
#include "surface/log.h"

namespace qv_data_interface {
namespace {

using pass_interface::InstanceInfo;
using pass_interface::RefreshSessionRsp;

constexpr std::uint32_t kHttpOk = 200;

template <class Answer>
std::string TagOf(const std::shared_ptr<Answer>& answer) {
  return answer ? answer->requestTag : std::string();
}

}  // namespace

void CQVDataControl::OnPhoneConnectRsp(std::int32_t transportResult, std::uint32_t httpStatus,
                                       std::shared_ptr<InstanceInfo> answer) {
  const Generation since = generation;
  const FrontEnd frontEnd = notice.Copy();
  const std::string target = targetId.Copy();
  // Copied first and checked then: the front end of the next Init hears nothing of this one's answer.
  if (generation != since) return;
  if (transportResult != 0) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE][%s]GetPhoneConnect failed; Error code [%d]", target.c_str(),
           static_cast<int>(kResultPhoneConnectFailed));
    return ReportFailedAnswer(frontEnd, kResultPhoneConnectFailed, TagOf(answer));
  }
  if (httpStatus != kHttpOk) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE][%s]GetPhoneConnect get http code [%d]; Error code[%d]", target.c_str(),
           static_cast<int>(httpStatus), static_cast<int>(kResultPhoneConnectNot200));
    return ReportFailedAnswer(frontEnd, kResultPhoneConnectNot200, TagOf(answer));
  }
  if (!answer) return;
  if (answer->code != 0) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE][%s]GetPhoneConnect get http code [%d][%s]", target.c_str(), answer->code,
           answer->message.c_str());
    return ReportRefusal(frontEnd, *answer, since);
  }
  // The key first: the front end may release and turn to another phone in one of the notices.
  const std::string key = cacheKey.Copy();
  if (generation != since) return;
  HandlePhoneConnect(*answer, since);
  SaveToCache(key, *answer);
}

void CQVDataControl::OnRefreshSessionRsp(std::int32_t transportResult, std::uint32_t httpStatus,
                                         std::shared_ptr<RefreshSessionRsp> answer) {
  const Generation since = generation;
  const FrontEnd frontEnd = notice.Copy();
  const std::string target = targetId.Copy();
  // Copied first and checked then: the front end of the next Init hears nothing of this one's answer.
  if (generation != since) return;
  if (transportResult != 0) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE][%s]OnRefreshSessionRsp failed; Error code [%d]", target.c_str(),
           static_cast<int>(kResultRefreshSessionFailed));
    return ReportFailedAnswer(frontEnd, kResultRefreshSessionFailed, TagOf(answer));
  }
  if (httpStatus != kHttpOk) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE][%s]OnRefreshSessionRsp get http code [%d]; Error code [%d]", target.c_str(),
           static_cast<int>(httpStatus), static_cast<int>(kResultRefreshSessionNot200));
    return ReportFailedAnswer(frontEnd, kResultRefreshSessionNot200, TagOf(answer));
  }
  if (!answer) return;
  if (answer->code != 0) {
    QV_LOG(kLogError, "[QV_DATA_INTERFACE][%s]OnRefreshSessionRsp get http code [%d][%s]", target.c_str(), answer->code,
           answer->message.c_str());
    return ReportRefusal(frontEnd, *answer, since);
  }
  // Each step for this generation only: a release may pass at any moment, and an Init for another phone.
  sessionId.Update([&](std::string& id) {
    if (generation == since) id = answer->sessionId;
  });
  // After that: a connection that is being built either sees the new id or can be found here.
  const auto connection = wsConnection.Copy();
  if (generation != since) return;
  if (connection) {
    connection->SetSessionId(answer->sessionId.c_str());
    // It may have been renewed once more by then.
    TellNewerSessionIds(*connection, answer->sessionId, since);
  }
  status.FillIfMade([&](Status& data) {
    if (generation == since) data.sessionId = sessionId.Copy();
  });
}

void CQVDataControl::ReportFailedAnswer(const FrontEnd& frontEnd, std::int32_t code, const std::string& requestTag) {
  TellStatus(frontEnd, code);
  SendMessageCollect(0, 0, code, requestTag.c_str(), "");
}

template <class Answer>
void CQVDataControl::ReportRefusal(const FrontEnd& frontEnd, const Answer& answer, Generation since) {
  Tell(frontEnd, [&answer](IQVDataInterfaceNotic& notic) { notic.OnStatus(answer.code, answer.message.c_str()); });
  DropConnection(since);
  SendMessageCollect(0, 5, answer.code, answer.requestTag.c_str(), "");
}

void CQVDataControl::SaveToCache(const std::string& key, const InstanceInfo& info) {
  if (key.empty()) return;
  std::string json;
  InstanceInfoToJson(info, json);
  const std::string cipherText = EncryptSessionText(json.data(), static_cast<std::int32_t>(json.size()));
  if (cipherText.empty()) return;
  const auto database = database_interface::IDatabaseInterface::GetDbInstance();
  if (database) database->SaveSessionCache(key.c_str(), cipherText.c_str(), info.sessionSignExpireTime);
}

}  // namespace qv_data_interface
