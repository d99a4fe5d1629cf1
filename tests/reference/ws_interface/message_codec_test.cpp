#include "reference/ws_interface/message_codec.h"

#include <gtest/gtest.h>

#include <vector>

#include "reference/ws_interface/endpoint.h"
#include "tests/reference/ws_interface/recording_sink.h"

namespace reference::ws {
namespace {

using Lines = std::vector<std::string>;

Lines Delivered(const std::string& slotAndArguments) {
  const Incoming message = DecodeMessage(R"({"type":"notice","slot":)" + slotAndArguments + "}");
  if (!std::holds_alternative<Notice>(message)) return {"not a notice"};
  RecordingSink sink;
  DeliverNotice(std::get<Notice>(message), sink);
  return sink.Lines();
}

TEST(MessageCodec, EachNoticeReachesItsOperationWithItsArguments) {
  for (const char* slot : {"5", "7", "8", "10", "12", "14", "23", "24", "25"}) {
    EXPECT_EQ(Delivered(std::string(slot) + R"(,"args":[])"), Lines{std::string("notice ") + slot});
  }
  const struct {
    const char* slotAndArguments;
    const char* line;
  } cases[] = {
      {R"(6,"args":["grüße"],"unknown":1)", "notice 6 grüße"},
      {R"(9,"args":[18446744073709551615,2,3,4294967295,5])", "notice 9 18446744073709551615 2 3 4294967295 5"},
      {R"(11,"args":[-7,2,65535,4,5,6])", "notice 11 -7 2 65535 4 5 6"},
      {R"(13,"args":[1,2,3,4])", "notice 13 1 2 3 4"},
  };
  for (const auto& row : cases) EXPECT_EQ(Delivered(row.slotAndArguments), Lines{row.line});
}

TEST(MessageCodec, AMalformedMessageIsRefusedByName) {
  const std::string longText(kMaxTextSize + 1, 'x');
  const struct {
    std::string json;
    const char* fault;
  } cases[] = {
      {"", "not JSON"},
      {R"({"type":"error","code":1} x)", "not JSON"},
      {R"({"type":"error","code":1,"code":2})", "not JSON"},
      {R"(/* */{"type":"error","code":1})", "not JSON"},
      {"[1]", "not a JSON object"},
      {std::string(100000, '['), "not JSON that can be read"},
      {R"({"type":"error","code":1})" + std::string(kMaxDocumentSize, ' '), "more than 1048576 bytes"},
      {R"({"code":1})", "type is missing"},
      {R"({"type":1})", "type is not a text"},
      {R"({"type":"other"})", "type is not one of"},
      {R"({"type":"error"})", "code is missing"},
      {R"({"type":"error","code":1.0})", "code is not an integer"},
      {R"({"type":"error","code":-1})", "code is not in 0 to 4294967295"},
      {R"({"type":"error","code":4294967296})", "code is not in 0 to 4294967295"},
      {R"({"type":"error","code":1,"message":null})", "message is not a text"},
      {R"({"type":"error","code":1,"message":"a\u0000b"})", "message holds U+0000"},
      {R"({"type":"error","code":1,"message":"\udc00"})", "message is not UTF-8"},
      {R"({"type":"authRsp","code":0,"formats":")" + longText + "\"}", "formats has more than 4096 bytes"},
      {R"({"type":"playRsp","values":{}})", "values is not an array"},
      {R"({"type":"playRsp","values":[0,0,0,0,0,0,0,0,0]})", "values has 9 elements, expected 10"},
      {R"({"type":"playRsp","values":[0,0,4294967296,0,0,0,0,0,0,0]})", "values[2] is not in 0 to"},
      {R"({"type":"playRsp","values":[0,18446744073709551616,0,0,0,0,0,0,0,0]})", "values[1] is not an integer"},
      {R"({"type":"notice","slot":15,"args":[]})", "slot is not one of"},
      {R"({"type":"notice","slot":5})", "args is missing"},
      {R"({"type":"notice","slot":5,"args":[1]})", "args has 1 elements, expected 0"},
      {R"({"type":"notice","slot":6,"args":[1]})", "args[0] is not a text"},
      {R"({"type":"notice","slot":11,"args":[2147483648,0,0,0,0,0]})", "args[0] is not a signed 32-bit number"},
      {R"({"type":"notice","slot":11,"args":[0,0,65536,0,0,0]})", "args[2] is not in 0 to 65535"},
      {R"({"type":"notice","slot":13,"args":[0,0,0,true]})", "args[3] is not an integer"},
  };
  for (const auto& [json, fault] : cases) {
    const Incoming message = DecodeMessage(json);
    ASSERT_TRUE(std::holds_alternative<Malformed>(message)) << json.substr(0, 80);
    EXPECT_NE(std::get<Malformed>(message).fault.find(fault), std::string::npos)
        << json.substr(0, 80) << ": " << std::get<Malformed>(message).fault;
  }
}

TEST(MessageCodec, AVideoFrameIsReadBigEndianAndItsFormatChecked) {
  std::vector<std::uint8_t> bytes = {0, 0, 0, 0, 0, 0, 1, 2, 0, 0, 1, 0x9A, 0, 0, 0, 3, 0, 0, 1, 9, 0xAA, 0xBB};
  const auto frame = DecodeVideoFrame(bytes);
  ASSERT_TRUE(frame);
  EXPECT_EQ(frame->sequence, 0x102U);
  EXPECT_EQ(frame->time, 0x19A00000003U);
  EXPECT_EQ(frame->format, 265U);
  EXPECT_EQ(frame->payloadSize, 2U);

  EXPECT_FALSE(DecodeVideoFrame(std::span(bytes).first(19)));
  EXPECT_FALSE(DecodeVideoFrame({}));
  bytes[19] = 10;
  EXPECT_FALSE(DecodeVideoFrame(bytes));
}

TEST(Endpoint, AUrlIsSchemeHostAndPortAndNothingElse) {
  for (const char* url : {"ws://localhost:1", "wss://10.0.0.7:8443", "wss://[::1]:65535", "wss://a-b_c.d:443"}) {
    const auto endpoint = ParseWebSocketUrl(url);
    ASSERT_TRUE(endpoint) << url;
    EXPECT_EQ(Url(*endpoint), url);
  }
  for (const char* url :
       {"", "http://a:1", "wss://", "wss://:1", "wss://a", "wss://a:", "wss://a:0", "wss://a:65536", "wss://a:-1",
        "wss://a:1/", "wss://a b:1", "wss://u@a:1", "wss://::1:1", "wss://[]:1", "wss://[a]:1", "wss://a\r\nb:1"}) {
    EXPECT_FALSE(ParseWebSocketUrl(url)) << url;
  }
  EXPECT_TRUE(ParseProxyUrl("http://proxy:3128/"));
  EXPECT_FALSE(ParseProxyUrl("https://proxy:3128"));
}

}  // namespace
}  // namespace reference::ws
