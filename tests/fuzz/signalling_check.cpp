#include <json/json.h>

#include <memory>
#include <string>

#include "reference/ws_interface/endpoint.h"
#include "reference/ws_interface/message_codec.h"
#include "tests/fuzz/checks.h"
#include "tests/reference/ws_interface/recording_sink.h"

namespace fuzz {
namespace {

using namespace reference::ws;

Json::Value Parsed(std::string_view text) {
  Json::Value value;
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  Require(reader->parse(text.data(), text.data() + text.size(), &value, nullptr), "it is JSON");
  return value;
}

// What a connection makes of a message, as the lines of a sink.
std::string Delivered(const Incoming& message) {
  RecordingSink sink;
  if (const auto* auth = std::get_if<AuthAnswer>(&message)) {
    sink.OnErrorCode(auth->code, auth->message.c_str());
    sink.OnAuthRsp(0, 0, 0, auth->formats.c_str());
  }
  if (const auto* play = std::get_if<PlayAnswer>(&message)) DeliverPlayAnswer(*play, sink);
  if (const auto* error = std::get_if<CloudError>(&message)) sink.OnErrorCode(error->code, error->message.c_str());
  if (const auto* notice = std::get_if<Notice>(&message)) {
    DeliverNotice(*notice, sink);
    const auto video = VideoParamInForce(*notice);
    Require(!video || notice->slot == 11, "only notice 11 changes the video");
  }
  std::string lines;
  for (const std::string& line : sink.Lines()) lines += line + '\n';
  return lines;
}

bool CheckMessage(std::string_view input) {
  const Incoming message = DecodeMessage(input);
  if (const auto* malformed = std::get_if<Malformed>(&message)) {
    Require(!malformed->fault.empty(), "a refusal says why");
    return false;
  }
  const std::string delivered = Delivered(message);
  Require(!delivered.empty() && delivered.size() < 3 * kMaxTextSize, "a message has one bounded notice");
  const Incoming again = DecodeMessage(Json::writeString(Json::StreamWriterBuilder(), Parsed(input)));
  Require(again.index() == message.index() && Delivered(again) == delivered, "the same message in another form");
  return true;
}

bool CheckFrame(std::string_view input) {
  const auto frame = DecodeVideoFrame({reinterpret_cast<const std::uint8_t*>(input.data()), input.size()});
  if (!frame) return false;
  Require(frame->format == 264 || frame->format == 265, "a frame has a known format");
  Require(frame->payloadSize == input.size() - 20, "a frame's payload is what follows its head");
  return true;
}

bool CheckUrl(std::string_view input) {
  ParseProxyUrl(input);
  const auto endpoint = ParseWebSocketUrl(input);
  if (!endpoint) return false;
  Require(endpoint->port != 0 && !endpoint->host.empty(), "a URL names host and port");
  Require(input.ends_with(std::to_string(endpoint->port)), "nothing follows a URL's port");
  const auto again = ParseWebSocketUrl(Url(*endpoint));
  Require(again && again->host == endpoint->host && again->port == endpoint->port && again->secure == endpoint->secure,
          "a URL that is written is read back equal");
  return true;
}

void CheckSending(const std::string& text) {
  CommandWriter writer(7);
  writer.Add(text.c_str());
  if (writer.Result() != kTaken) return;
  const std::string sent = text.c_str();
  Require(Parsed(writer.Take())["args"][0].asString() == sent, "a text arrives as it was sent");
  Require(Parsed(EncodeSession(sent))["sessionId"].asString() == sent, "a session arrives as it was sent");
}

}  // namespace

bool CheckSignalling(std::string_view input) {
  CheckSending(std::string(input));
  const bool isFrame = CheckFrame(input);
  const bool isUrl = CheckUrl(input);
  return CheckMessage(input) || isFrame || isUrl;
}

}  // namespace fuzz
