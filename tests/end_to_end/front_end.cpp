#include <algorithm>

#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

template <class... Values>
std::string Line(std::string text, const Values&... values) {
  ((text += ' ', text += std::to_string(values)), ...);
  return text;
}

}  // namespace

void Record::Add(std::string text) {
  const std::lock_guard<std::mutex> lock(mutex);
  texts.push_back(std::move(text));
  grown.notify_all();
}

bool Record::WaitFor(const std::string& beginning, std::size_t times) const {
  std::unique_lock<std::mutex> lock(mutex);
  if (grown.wait_for(lock, kPatience, [&] { return CountLocked(beginning) >= times; })) return true;
  std::string list;
  for (const std::string& text : texts) list += "\n  " + text;
  ADD_FAILURE() << "\"" << beginning << "\" did not come " << times << " times; what came:" << list;
  return false;
}

std::size_t Record::Count(const std::string& beginning) const {
  const std::lock_guard<std::mutex> lock(mutex);
  return CountLocked(beginning);
}

std::size_t Record::CountLocked(const std::string& beginning) const {
  const auto matches = [&](const std::string& text) { return text.starts_with(beginning); };
  return static_cast<std::size_t>(std::count_if(texts.begin(), texts.end(), matches));
}

Texts Record::All() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return texts;
}

FrontEnd::FrontEnd(Reaction reaction) : reaction(std::move(reaction)) {}

std::string FrontEnd::States() const {
  std::string states;
  for (const std::string& notice : notices.All()) {
    if (notice.starts_with(kConnecting)) states += 'C';
    if (notice.starts_with(kStands)) states += 'S';
    if (notice.starts_with(kDisconnected)) states += 'D';
  }
  return states;
}

void FrontEnd::Tell(const std::string& notice) {
  notices.Add(notice);
  if (reaction) reaction(notice);
}

void FrontEnd::OnStatus(std::int32_t code, const char* message) {
  Tell(Line("OnStatus", code) + ": " + message);
}

void FrontEnd::OnServiceCode(std::int32_t code, const char* message) {
  Tell(Line("OnServiceCode", code) + ": " + message);
}

std::int32_t FrontEnd::OnChooseVideoFormat(const std::int32_t* formats, std::uint64_t count) {
  std::string notice = "OnChooseVideoFormat";
  for (std::uint64_t i = 0; i < count; ++i) notice = Line(notice, formats[i]);
  Tell(notice);
  return qv_data_interface::QV_VIDEO_FORMAT_H264;
}

void FrontEnd::OnPlayRsp(std::uint32_t value1, std::uint64_t value2, std::uint32_t value3, std::uint32_t value4,
                         std::uint32_t value5, std::uint32_t value6, std::uint32_t value7, std::uint32_t value8,
                         std::uint32_t value9, std::uint32_t value10) {
  Tell(Line("OnPlayRsp", value1, value2, value3, value4, value5, value6, value7, value8, value9, value10));
}

void FrontEnd::OnFirstFrame(std::uint64_t sequence, std::uint64_t /*time*/, std::uint64_t size, std::uint32_t format) {
  Tell(Line(kFirstFrame, sequence, size, format));
}

std::int32_t FrontEnd::OnNotice8(const char* text) {
  Tell(std::string("OnNotice8 ") + text);
  return 0;
}

void FrontEnd::OnVideoParamRsp(std::int32_t result, std::uint64_t value, std::uint16_t frameRate, std::uint32_t bitRate,
                               std::uint16_t width, std::uint16_t height) {
  Tell(Line("OnVideoParamRsp", result, value, frameRate, bitRate, width, height));
}

void FrontEnd::OnIspList(const qv_data_interface::IspItem* items, std::uint64_t count) {
  std::string notice = "OnIspList";
  for (std::uint64_t i = 0; i < count; ++i) notice = Line(notice, items[i].ispCode) + "=" + items[i].label;
  Tell(notice);
}

}  // namespace end_to_end
