// What the cloud answers to an HTTP request: the decision, apart from how it travels.
//
// Threads: the cloud's thread. Ownership: the reply is a value.
#ifndef QV_CLOUD_SERVICE_H
#define QV_CLOUD_SERVICE_H

#include <chrono>
#include <string>
#include <string_view>

#include "tools/qv_cloud/state.h"

namespace qv_cloud {

struct HttpRequest {
  std::string_view method;
  std::string_view target;
  std::string_view contentType;
  std::string_view body;
};

struct HttpReply {
  enum class Sending { normal, never, close, half };
  Sending sending = Sending::normal;
  unsigned status = 200;
  std::string body;
  std::uint32_t retryAfterSeconds = 0;  // 0: not told
  std::chrono::milliseconds after{0};
};

HttpReply AnswerHttp(State& state, const HttpRequest& request, Time now);

}  // namespace qv_cloud

#endif
