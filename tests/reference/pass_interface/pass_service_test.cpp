// The life of requests and of the service, over plain HTTP on loopback.
#include <gtest/gtest.h>

#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/write.hpp>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "pass_interface/pass_interface.h"
#include "reference/pass_interface/pass_result.h"

namespace {

using namespace pass_interface;
using boost::asio::ip::tcp;
using std::chrono::steady_clock;

constexpr std::int32_t kCouldNotConnect = 7;
constexpr std::int32_t kTimedOut = 28;
constexpr auto kPatience = std::chrono::seconds(20);

// A moment that one thread waits for and another one makes come.
class Moment {
 public:
  void Come() {
    const std::lock_guard<std::mutex> lock(mutex);
    hasCome = true;
    changed.notify_all();
  }
  bool Await() {
    std::unique_lock<std::mutex> lock(mutex);
    return changed.wait_for(lock, kPatience, [this] { return hasCome; });
  }

 private:
  std::mutex mutex;
  std::condition_variable changed;
  bool hasCome = false;
};

// A port of the loopback interface. While it lives connections to it succeed, and it answers none by itself.
class Listener {
 public:
  Listener() : acceptor(context, tcp::endpoint(boost::asio::ip::address_v4::loopback(), 0)) {}

  std::string Url() const { return "http://127.0.0.1:" + std::to_string(acceptor.local_endpoint().port()) + "/api/"; }

  // Takes one request, whose body ends with "}", answers it, and closes. Returns the request, empty when none came.
  std::string Answer(const std::string& answer) {
    tcp::socket socket(context);
    boost::system::error_code error = boost::asio::error::timed_out;
    acceptor.async_accept(socket, [&error](boost::system::error_code result) { error = result; });
    context.restart();
    context.run_for(kPatience);
    acceptor.cancel();
    context.poll();
    std::string request;
    std::array<char, 4096> piece;
    while (!request.ends_with('}') && !error) {
      request.append(piece.data(), socket.read_some(boost::asio::buffer(piece), error));
    }
    boost::asio::write(socket, boost::asio::buffer(answer), error);
    return request;
  }

 private:
  boost::asio::io_context context;
  tcp::acceptor acceptor;
};

std::string RefusingUrl() {
  return Listener().Url();
}

struct Notice {
  std::string kind;
  std::int32_t transportResult;
  std::uint32_t status;
  std::string requestTag;
  std::int32_t code;
};

class Sink : public IPassInterfaceNotic {
 public:
  void OnPhoneConnectRsp(std::int32_t result, std::uint32_t status, std::shared_ptr<InstanceInfo> answer) override {
    Note({"phone-connect", result, status, answer->requestTag, answer->code});
  }
  void OnRefreshSessionRsp(std::int32_t result, std::uint32_t status,
                           std::shared_ptr<RefreshSessionRsp> answer) override {
    Note({"refresh-session", result, status, answer->requestTag, answer->code});
  }

  bool Await(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex);
    return changed.wait_for(lock, kPatience, [&] { return notices.size() >= count; });
  }
  std::vector<Notice> Notices() {
    const std::lock_guard<std::mutex> lock(mutex);
    return notices;
  }

  // Runs inside every notice.
  std::function<void()> inside;

 private:
  void Note(Notice notice) {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      notices.push_back(std::move(notice));
      changed.notify_all();
    }
    if (inside) inside();
  }

  std::mutex mutex;
  std::condition_variable changed;
  std::vector<Notice> notices;
};

std::int32_t Initialise(IPassInterface& service, const std::string& url, std::shared_ptr<IPassInterfaceNotic> sink,
                        std::uint32_t requestTimeOut = 60000) {
  return service.Initialise(url.c_str(), "user", "device", "token", "1.13.0", sink, nullptr, 10000, requestTimeOut,
                            true);
}

std::int32_t Connect(IPassInterface& service) {
  return service.RequestPhoneConnect("phone-1", "", "", nullptr);
}

class PassServiceTest : public testing::Test {
 protected:
  std::shared_ptr<IPassInterface> service = IPassInterface::Create();
  std::shared_ptr<Sink> sink = std::make_shared<Sink>();
};

TEST_F(PassServiceTest, ARefusedConnectionIsReportedOnceWithARecord) {
  ASSERT_EQ(Initialise(*service, RefusingUrl(), sink), 0);
  ASSERT_EQ(Connect(*service), 0);
  ASSERT_TRUE(sink->Await(1));
  ASSERT_EQ(service->RequestRefreshSession("s-1", "", 0), 0);
  ASSERT_TRUE(sink->Await(2));
  service->Stop();
  const std::vector<Notice> notices = sink->Notices();
  ASSERT_EQ(notices.size(), 2U);
  EXPECT_EQ(notices[0].kind, "phone-connect");
  EXPECT_EQ(notices[1].kind, "refresh-session");
  for (const Notice& notice : notices) {
    EXPECT_EQ(notice.transportResult, kCouldNotConnect);
    EXPECT_EQ(notice.status, 0U);
    EXPECT_EQ(notice.code, -1);
    EXPECT_TRUE(notice.requestTag.starts_with("request-")) << notice.requestTag;
  }
}

TEST_F(PassServiceTest, AnswersAreJudgedByStatusThenLengthThenContent) {
  const std::string refusal = R"({"requestTag": "r-1", "code": 7, "message": "no"})";
  const auto answerWith = [](const std::string& status, const std::string& body, const std::string& header = "") {
    return "HTTP/1.1 " + status + "\r\nConnection: close\r\n" + header +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
  };
  const std::string huge(kMaximumAnswerBytes + 1, ' ');
  const struct {
    std::string answer;
    std::int32_t transportResult;
    std::uint32_t status;
    std::string requestTag;
    std::int32_t code;
  } rows[] = {
      {answerWith("200 OK", refusal), 0, 200, "r-1", 7},
      {answerWith("500 Oops", refusal), 0, 500, "request-", -1},
      {answerWith("500 Oops", huge), 0, 500, "request-", -1},
      {answerWith("302 Found", "", "Location: http://127.0.0.1:1/\r\n"), 0, 302, "request-", -1},
      {answerWith("200 OK", huge), kAnswerTooLong, 200, "request-", -1},
      {answerWith("200 OK", R"({"requestTag": "r-2", "code": 0})"), kMalformedAnswer, 200, "r-2", -1},
      {answerWith("200 OK", "<html>"), kMalformedAnswer, 200, "request-", -1},
      {"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{", 18, 200, "request-", -1},
      {"", 52, 0, "request-", -1},
  };
  Listener listener;
  ASSERT_EQ(Initialise(*service, listener.Url(), sink), 0);
  std::size_t count = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.answer.substr(0, 80));
    ASSERT_EQ(Connect(*service), 0);
    const std::string request = listener.Answer(row.answer);
    EXPECT_TRUE(request.starts_with("POST /api/v1/phone-connect HTTP/1.1\r\n")) << request;
    EXPECT_NE(request.find("\r\nContent-Type: application/json\r\n"), std::string::npos) << request;
    EXPECT_TRUE(request.ends_with(R"({"credential1":"user","credential2":"device","credential3":"token",)"
                                  R"("targetId":"phone-1","text1":"","text2":"","version":"1.13.0"})"))
        << request;
    ASSERT_TRUE(sink->Await(++count));
    const Notice notice = sink->Notices().back();
    EXPECT_EQ(notice.transportResult, row.transportResult);
    EXPECT_EQ(notice.status, row.status);
    EXPECT_TRUE(notice.requestTag.starts_with(row.requestTag)) << notice.requestTag;
    EXPECT_EQ(notice.code, row.code);
  }
}

TEST_F(PassServiceTest, APeerThatNeverAnswersCostsTheTimeOutOnly) {
  const Listener silent;
  ASSERT_EQ(Initialise(*service, silent.Url(), sink, 100), 0);
  ASSERT_EQ(Connect(*service), 0);
  ASSERT_TRUE(sink->Await(1));
  EXPECT_EQ(sink->Notices()[0].transportResult, kTimedOut);
}

TEST_F(PassServiceTest, StopDropsHangingRequestsAtOnceAndWithoutANotice) {
  const Listener silent;
  ASSERT_EQ(Initialise(*service, silent.Url(), sink), 0);
  ASSERT_EQ(Connect(*service), 0);
  const auto start = steady_clock::now();
  service->Stop();
  EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_TRUE(sink->Notices().empty());
  EXPECT_EQ(Connect(*service), kStopped);
  service->Stop();
}

TEST_F(PassServiceTest, OnlySoManyRequestsMayBeOutstandingAndEachAnswerMakesRoom) {
  const Listener silent;
  ASSERT_EQ(Initialise(*service, silent.Url(), sink), 0);
  for (std::size_t i = 0; i < kMaximumOutstandingRequests; ++i) ASSERT_EQ(Connect(*service), 0) << i;
  EXPECT_EQ(Connect(*service), kTooManyRequests);
  ASSERT_EQ(Initialise(*service, RefusingUrl(), sink), 0);
  for (std::size_t i = 0; i <= kMaximumOutstandingRequests; ++i) {
    ASSERT_EQ(Connect(*service), 0) << i;
    ASSERT_TRUE(sink->Await(i + 1));
  }
}

TEST_F(PassServiceTest, AfterAStopAFurtherInitialiseServesAgainWithTheNewSettings) {
  const Listener silent;
  ASSERT_EQ(Initialise(*service, silent.Url(), sink), 0);
  ASSERT_EQ(Connect(*service), 0);
  service->Stop();
  ASSERT_EQ(Initialise(*service, RefusingUrl(), sink), 0);
  ASSERT_EQ(Connect(*service), 0);
  ASSERT_TRUE(sink->Await(1));
  EXPECT_EQ(sink->Notices()[0].transportResult, kCouldNotConnect);
}

TEST_F(PassServiceTest, InitialiseInsideANoticeEndsTheOldRequestsAndServesTheNew) {
  const std::string url = RefusingUrl();
  Moment done;
  int rounds = 0;
  sink->inside = [&] {
    if (++rounds == 3) return done.Come();
    EXPECT_EQ(Initialise(*service, url, sink), 0);
    EXPECT_EQ(Connect(*service), 0);
  };
  ASSERT_EQ(Initialise(*service, url, sink), 0);
  ASSERT_EQ(Connect(*service), 0);
  EXPECT_TRUE(done.Await());
  service->Stop();
}

struct AtThreadEnd {
  ~AtThreadEnd() { moment->Come(); }
  std::shared_ptr<Moment> moment;
};

TEST_F(PassServiceTest, StopInsideANoticeReturnsAndIsTheLast) {
  const auto threadEnded = std::make_shared<Moment>();
  bool first = true;
  sink->inside = [&] {
    // Issued together these fail together, so that others are ready to be told of when the second notice stops.
    for (int i = 0; first && i < 10; ++i) EXPECT_EQ(Connect(*service), 0);
    if (std::exchange(first, false)) return;
    thread_local const AtThreadEnd atThreadEnd{threadEnded};
    service->Stop();
  };
  ASSERT_EQ(Initialise(*service, RefusingUrl(), sink), 0);
  ASSERT_EQ(Connect(*service), 0);
  ASSERT_TRUE(threadEnded->Await());
  EXPECT_EQ(sink->Notices().size(), 2U);
}

TEST_F(PassServiceTest, AThrowingSinkDoesNotCostTheNextItsNotice) {
  sink->inside = [] { throw std::runtime_error("thrown by the sink"); };
  ASSERT_EQ(Initialise(*service, RefusingUrl(), sink), 0);
  ASSERT_EQ(Connect(*service), 0);
  ASSERT_EQ(Connect(*service), 0);
  EXPECT_TRUE(sink->Await(2));
  service->Stop();
}

// The sink owns the service, as the library's controller does, and stops it when it dies.
class OwningSink : public Sink {
 public:
  OwningSink(std::shared_ptr<IPassInterface> service, Moment& dead) : service(std::move(service)), dead(dead) {}
  ~OwningSink() override {
    diedOn = std::this_thread::get_id();
    service->Stop();
    service.reset();
    dead.Come();
  }

  static inline std::thread::id diedOn;

 private:
  std::shared_ptr<IPassInterface> service;
  Moment& dead;
};

TEST_F(PassServiceTest, ASinkMayDieInsideItsNoticeAndTakeTheServiceWithIt) {
  const Listener silent;
  Moment entered;
  Moment dropped;
  Moment dead;
  auto owner = std::make_shared<OwningSink>(service, dead);
  const std::weak_ptr<IPassInterface> observed = service;
  owner->inside = [&] {
    entered.Come();
    EXPECT_TRUE(dropped.Await());
  };
  ASSERT_EQ(Initialise(*service, RefusingUrl(), owner), 0);
  ASSERT_EQ(Connect(*service), 0);
  service.reset();
  ASSERT_TRUE(entered.Await());
  owner.reset();
  dropped.Come();
  ASSERT_TRUE(dead.Await());
  EXPECT_NE(OwningSink::diedOn, std::this_thread::get_id());
  EXPECT_TRUE(observed.expired());
}

TEST_F(PassServiceTest, WhatInitialiseRefuses) {
  const std::string longText(kMaximumTextBytes + 1, 'x');
  const struct {
    const char* url;
    const char* credential;
    std::uint32_t connectTimeOut;
    std::uint32_t requestTimeOut;
    std::int32_t result;
  } rows[] = {
      {"http://127.0.0.1:1", "c", 1, kMaximumTimeOutMs, 0},
      {"https://[::1]/deep/path/", "c", 1, 1, 0},
      {nullptr, "c", 1, 1, kNullArgument},
      {"http://h", nullptr, 1, 1, kNullArgument},
      {"http://h", longText.c_str(), 1, 1, kTextTooLong},
      {"", "c", 1, 1, kBadBaseUrl},
      {"localhost", "c", 1, 1, kBadBaseUrl},
      {"ftp://h", "c", 1, 1, kBadBaseUrl},
      {"http://", "c", 1, 1, kBadBaseUrl},
      {"http://h:99999", "c", 1, 1, kBadBaseUrl},
      {"http://u:p@h", "c", 1, 1, kBadBaseUrl},
      {"http://h/?q=1", "c", 1, 1, kBadBaseUrl},
      {"http://h/#f", "c", 1, 1, kBadBaseUrl},
      {"http://h", "c", 0, 1, kBadTimeOut},
      {"http://h", "c", 1, 0, kBadTimeOut},
      {"http://h", "c", 1, kMaximumTimeOutMs + 1, kBadTimeOut},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(service->Initialise(row.url, row.credential, "", "", "", sink, nullptr, row.connectTimeOut,
                                  row.requestTimeOut, true),
              row.result)
        << (row.url != nullptr ? row.url : "no URL") << ", " << row.connectTimeOut << ", " << row.requestTimeOut;
  }
  EXPECT_EQ(Initialise(*service, "http://h", nullptr), kNullArgument);
}

TEST_F(PassServiceTest, WhatARequestRefuses) {
  const std::string longText(kMaximumTextBytes + 1, 'x');
  EXPECT_EQ(Connect(*service), kNotInitialised);
  EXPECT_EQ(service->RequestRefreshSession("s-1", "", 0), kNotInitialised);
  ASSERT_EQ(Initialise(*service, RefusingUrl(), sink), 0);
  EXPECT_EQ(service->RequestPhoneConnect(nullptr, "", "", nullptr), kNullArgument);
  EXPECT_EQ(service->RequestPhoneConnect("p", nullptr, "", nullptr), kNullArgument);
  EXPECT_EQ(service->RequestPhoneConnect("p", "", longText.c_str(), nullptr), kTextTooLong);
  EXPECT_EQ(service->RequestRefreshSession(nullptr, "", 0), kNullArgument);
  EXPECT_EQ(service->RequestRefreshSession("s-1", longText.c_str(), 0), kTextTooLong);
  service->Stop();
  EXPECT_TRUE(sink->Notices().empty());
}

}  // namespace
