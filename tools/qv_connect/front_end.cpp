#include "tools/qv_connect/front_end.h"

#include <algorithm>
#include <sstream>

namespace qv_connect {
namespace {

std::string Text(const char* text) {
  return text != nullptr ? text : "";
}

template <class... Values>
std::string Joined(const char* head, const Values&... values) {
  std::ostringstream text;
  text << head;
  ((text << ' ' << values), ...);
  return text.str();
}

}  // namespace

void FrontEnd::OnStatus(std::int32_t code, const char* message) {
  events->Push(EventKind::kStatus, code, Text(message));
}

void FrontEnd::OnServiceCode(std::int32_t code, const char* message) {
  events->Push(EventKind::kRelay, code, "service code " + std::to_string(code) + ": " + Text(message));
}

std::int32_t FrontEnd::OnChooseVideoFormat(const std::int32_t* formats, std::uint64_t count) {
  const std::int32_t* const end = formats + count;
  const std::int32_t choice = std::find(formats, end, wantedFormat) != end || count == 0 ? wantedFormat : formats[0];
  std::ostringstream text;
  text << "accepted; formats offered:";
  for (const std::int32_t* format = formats; format != end; ++format) text << ' ' << *format;
  text << "; chosen: " << choice;
  events->Push(EventKind::kFormats, choice, text.str());
  return choice;
}

void FrontEnd::OnPlayRsp(std::uint32_t value1, std::uint64_t value2, std::uint32_t value3, std::uint32_t value4,
                         std::uint32_t value5, std::uint32_t value6, std::uint32_t value7, std::uint32_t value8,
                         std::uint32_t value9, std::uint32_t value10) {
  events->Push(EventKind::kPlayAnswer, 0,
               Joined("answered:", value1, value2, value3, value4, value5, value6, value7, value8, value9, value10));
}

void FrontEnd::OnFirstFrame(std::uint64_t value1, std::uint64_t, std::uint64_t value3, std::uint32_t value4) {
  events->Push(
      EventKind::kFirstFrame, 0,
      "number " + std::to_string(value1) + ", " + std::to_string(value3) + " bytes, format " + std::to_string(value4));
}

// The library hands the carrier lines over as soon as it has a session. With one from the cache it does so on the
// thread that called GetPhoneConnect; the cloud's answer always comes on another.
void FrontEnd::OnIspList(const qv_data_interface::IspItem* items, std::uint64_t count) {
  const bool fromCache = std::this_thread::get_id() == connectThread;
  std::string text = fromCache ? "session from the cache" : "session granted by the cloud";
  text += count == 0 ? "; no carrier lines" : "; carrier lines:";
  for (std::uint64_t i = 0; i < count; ++i) {
    text += (i == 0 ? " " : ", ") + std::to_string(items[i].ispCode) + " (" + Text(items[i].label) + ")";
  }
  events->Push(EventKind::kSession, fromCache ? 1 : 0, std::move(text));
}

std::int32_t FrontEnd::OnNotice8(const char* text) {
  Relay("notice 8: " + Text(text));
  return 0;
}

void FrontEnd::OnNotice12(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3, std::uint32_t value4,
                          std::uint32_t value5) {
  Relay(Joined("notice 12:", value1, value2, value3, value4, value5));
}

void FrontEnd::OnVideoParamRsp(std::int32_t result, std::uint64_t, std::uint16_t frameRate, std::uint32_t bitRate,
                               std::uint16_t width, std::uint16_t height) {
  Relay("video parameters, result " + std::to_string(result) + ": " + std::to_string(width) + "x" +
        std::to_string(height) + ", " + std::to_string(frameRate) + " frames/s, bit rate " + std::to_string(bitRate));
}

void FrontEnd::OnNotice16(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3, std::uint32_t value4) {
  Relay(Joined("notice 16:", value1, value2, value3, value4));
}

}  // namespace qv_connect
