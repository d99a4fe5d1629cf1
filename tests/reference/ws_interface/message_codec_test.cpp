#include "reference/ws_interface/message_codec.h"

#include <vector>

#include "reference/ws_interface/endpoint.h"
#include "tests/reference/ws_interface/recording_sink.h"
#include "tests/support/transcribed.h"

namespace reference::ws {
namespace {

struct MessageCodec : tests::Transcribed<> {
  // The notice that a sink is told, or what is wrong with the message.
  static std::string OutcomeOf(const std::string& json) {
    const Incoming message = DecodeMessage(json);
    if (const auto* malformed = std::get_if<Malformed>(&message)) return malformed->fault;
    RecordingSink sink;
    DeliverNotice(std::get<Notice>(message), sink);
    return sink.Lines().at(0);
  }
};

TEST_F(MessageCodec, ANoticeReachesItsOperationAndAMalformedMessageIsRefusedByName) {
  ForEachCase(OutcomeOf);
  const std::string longText(kMaxTextSize + 1, 'x');
  Indent("nothing: " + OutcomeOf(""));
  Indent("very deep: " + OutcomeOf(std::string(100000, '[')));
  Indent("very long: " + OutcomeOf(R"({"type":"error","code":1})" + std::string(kMaxDocumentSize, ' ')));
  Indent("with a long text: " + OutcomeOf(R"({"type":"authRsp","code":0,"formats":")" + longText + "\"}"));
}

TEST(VideoFrame, IsReadBigEndianAndItsFormatChecked) {
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

using Endpoints = tests::Transcribed<>;

TEST_F(Endpoints, AUrlIsSchemeHostAndPortAndNothingElse) {
  ForEachCase([](const std::string& url) {
    const auto endpoint = ParseWebSocketUrl(url);
    return endpoint ? Url(*endpoint) : "refused";
  });
  EXPECT_FALSE(ParseWebSocketUrl(""));
  EXPECT_FALSE(ParseWebSocketUrl("wss://a\r\nb:1"));
  EXPECT_TRUE(ParseProxyUrl("http://proxy:3128/"));
  EXPECT_FALSE(ParseProxyUrl("https://proxy:3128"));
}

}  // namespace
}  // namespace reference::ws
