// The life of requests and of the service, over plain HTTP on loopback.
#include <gtest/gtest.h>

#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/write.hpp>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "pass_interface/pass_interface.h"
#include "reference/common/service_threads.h"
#include "reference/pass_interface/pass_result.h"
#include "tests/support/line.h"
#include "tests/support/notice_record.h"

namespace {

using namespace pass_interface;
using boost::asio::ip::tcp;

using tests::kPatience;

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

// Records result, status, code and request tag; of a tag made by the service, only what they have in common. The other
// answer goes the same way, and is seen where the whole library is tested.
class Sink : public IPassInterfaceNotic, public tests::NoticeRecord {
 public:
  void OnPhoneConnectRsp(std::int32_t result, std::uint32_t status, std::shared_ptr<InstanceInfo> answer) override {
    const std::string& tag = answer->requestTag;
    Add(tests::Line("", result, status, answer->code, tag.starts_with("request-") ? "request-" : tag));
  }
  void OnRefreshSessionRsp(std::int32_t, std::uint32_t, std::shared_ptr<RefreshSessionRsp>) override {}
};

const std::string kCouldNotConnect = "(7, 0, -1, request-)";

std::int32_t Initialise(IPassInterface& service, const std::string& url, std::shared_ptr<IPassInterfaceNotic> sink) {
  return service.Initialise(url.c_str(), "user", "device", "token", "1.13.0", sink, nullptr, 10000, 60000, true);
}

std::int32_t Connect(IPassInterface& service) {
  return service.RequestPhoneConnect("phone-1", "", "", nullptr);
}

class PassServiceTest : public testing::Test {
 protected:
  void InitialiseAndConnect(const std::string& url) {
    ASSERT_EQ(Initialise(*service, url, sink), 0);
    ASSERT_EQ(Connect(*service), 0);
  }

  std::shared_ptr<IPassInterface> service = IPassInterface::Create();
  std::shared_ptr<Sink> sink = std::make_shared<Sink>();
};

TEST_F(PassServiceTest, AThreadLastsAsLongAsThereIsWorkAndTheNextRequestBringsAnother) {
  InitialiseAndConnect(RefusingUrl());
  for (std::size_t answers = 1; answers <= 2; ++answers) {
    ASSERT_TRUE(sink->WaitFor(kCouldNotConnect, answers));
    EXPECT_TRUE(reference::WaitForServiceThreads(kPatience));
    EXPECT_EQ(Connect(*service), 0);
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
    std::string told;
  } rows[] = {
      {answerWith("200 OK", refusal), "(0, 200, 7, r-1)"},
      {answerWith("500 Oops", huge), "(0, 500, -1, request-)"},
      {answerWith("302 Found", "", "Location: http://127.0.0.1:1/\r\n"), "(0, 302, -1, request-)"},
      {answerWith("200 OK", huge), tests::Line("", kAnswerTooLong, 200, -1, "request-")},
      {answerWith("200 OK", R"({"requestTag": "r-2", "code": 0})"), tests::Line("", kMalformedAnswer, 200, -1, "r-2")},
      {answerWith("200 OK", "<html>"), tests::Line("", kMalformedAnswer, 200, -1, "request-")},
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
    ASSERT_TRUE(sink->WaitFor("", ++count));
    EXPECT_EQ(sink->Lines().back(), row.told);
  }
}

TEST_F(PassServiceTest, OnlySoManyRequestsMayBeOutstandingAndEachAnswerMakesRoom) {
  const Listener silent;
  ASSERT_EQ(Initialise(*service, silent.Url(), sink), 0);
  for (std::size_t i = 0; i < kMaximumOutstandingRequests; ++i) ASSERT_EQ(Connect(*service), 0) << i;
  EXPECT_EQ(Connect(*service), kTooManyRequests);
  std::size_t answers = 0;
  sink->inside = [&](const std::string&) {
    if (++answers > kMaximumOutstandingRequests) return;
    EXPECT_EQ(Connect(*service), 0);
  };
  InitialiseAndConnect(RefusingUrl());
  EXPECT_TRUE(sink->WaitFor(kCouldNotConnect, kMaximumOutstandingRequests + 1));
  service->Stop();
}

TEST_F(PassServiceTest, AStoppedServiceRefusesRequestsUntilAFurtherInitialise) {
  const Listener silent;
  InitialiseAndConnect(silent.Url());
  service->Stop();
  EXPECT_TRUE(sink->Lines().empty());
  EXPECT_EQ(Connect(*service), kStopped);
  service->Stop();
  InitialiseAndConnect(RefusingUrl());
  EXPECT_TRUE(sink->WaitFor(kCouldNotConnect));
}

TEST_F(PassServiceTest, InitialiseInsideANoticeEndsTheOldRequestsAndServesTheNew) {
  const std::string url = RefusingUrl();
  int rounds = 0;
  sink->inside = [&](const std::string&) {
    if (++rounds == 3) return;
    EXPECT_EQ(Initialise(*service, url, sink), 0);
    EXPECT_EQ(Connect(*service), 0);
  };
  InitialiseAndConnect(url);
  EXPECT_TRUE(sink->WaitFor(kCouldNotConnect, 3));
  service->Stop();
}

TEST_F(PassServiceTest, StopInsideANoticeReturnsAndIsTheLast) {
  bool first = true;
  sink->inside = [&](const std::string&) {
    // Issued together these fail together, so that others are ready to be told of when the second notice stops.
    for (int i = 0; first && i < 10; ++i) EXPECT_EQ(Connect(*service), 0);
    if (std::exchange(first, false)) return;
    service->Stop();
  };
  InitialiseAndConnect(RefusingUrl());
  ASSERT_TRUE(reference::WaitForServiceThreads(kPatience));
  EXPECT_EQ(sink->Lines().size(), 2U);
}

TEST_F(PassServiceTest, AThrowingSinkDoesNotCostTheNextItsNotice) {
  sink->inside = [](const std::string&) { throw std::runtime_error("thrown by the sink"); };
  InitialiseAndConnect(RefusingUrl());
  ASSERT_EQ(Connect(*service), 0);
  EXPECT_TRUE(sink->WaitFor(kCouldNotConnect, 2));
  service->Stop();
}

TEST_F(PassServiceTest, WhatInitialiseRefuses) {
  const std::string longText(kMaximumTextBytes + 1, 'x');
  const auto initialise = [&](const char* url, const char* credential, std::uint32_t connectTimeOut,
                              std::uint32_t requestTimeOut) {
    return service->Initialise(url, credential, "", "", "", sink, nullptr, connectTimeOut, requestTimeOut, true);
  };
  EXPECT_EQ(initialise("http://127.0.0.1:1", "c", 1, kMaximumTimeOutMs), 0);
  EXPECT_EQ(initialise("https://[::1]/deep/path/", "c", 1, 1), 0);
  EXPECT_EQ(initialise(nullptr, "c", 1, 1), kNullArgument);
  EXPECT_EQ(initialise("http://h", nullptr, 1, 1), kNullArgument);
  EXPECT_EQ(Initialise(*service, "http://h", nullptr), kNullArgument);
  EXPECT_EQ(initialise("http://h", longText.c_str(), 1, 1), kTextTooLong);
  EXPECT_EQ(initialise("http://h", "c", 0, 1), kBadTimeOut);
  EXPECT_EQ(initialise("http://h", "c", 1, 0), kBadTimeOut);
  EXPECT_EQ(initialise("http://h", "c", 1, kMaximumTimeOutMs + 1), kBadTimeOut);
  for (const char* url :
       {"", "localhost", "ftp://h", "http://", "http://h:99999", "http://u:p@h", "http://h/?q=1", "http://h/#f"}) {
    EXPECT_EQ(initialise(url, "c", 1, 1), kBadBaseUrl) << url;
  }
}

TEST_F(PassServiceTest, WhatARequestRefuses) {
  const std::string longText(kMaximumTextBytes + 1, 'x');
  EXPECT_EQ(Connect(*service), kNotInitialised);
  EXPECT_EQ(service->RequestRefreshSession("s-1", "", 0), kNotInitialised);
  ASSERT_EQ(Initialise(*service, RefusingUrl(), sink), 0);
  EXPECT_EQ(service->RequestPhoneConnect(nullptr, "", "", nullptr), kNullArgument);
  EXPECT_EQ(service->RequestPhoneConnect("p", "", longText.c_str(), nullptr), kTextTooLong);
  EXPECT_EQ(service->RequestRefreshSession(nullptr, "", 0), kNullArgument);
  EXPECT_EQ(service->RequestRefreshSession("s-1", longText.c_str(), 0), kTextTooLong);
  service->Stop();
  EXPECT_TRUE(sink->Lines().empty());
}

}  // namespace
