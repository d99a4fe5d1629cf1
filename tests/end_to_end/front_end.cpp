#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {

FrontEnd::FrontEnd(Reaction reaction) {
  notices.inside = std::move(reaction);
}

std::string FrontEnd::States() const {
  std::string states;
  for (const std::string& notice : notices.All()) {
    if (notice.starts_with(kConnecting)) states += 'C';
    if (notice.starts_with(kStands)) states += 'S';
    if (notice.starts_with(kDisconnected)) states += 'D';
  }
  return states;
}

void FrontEnd::OnStatus(std::int32_t code, const char* message) {
  notices.Add("OnStatus", std::to_string(code) + ": " + message);
}

void FrontEnd::OnServiceCode(std::int32_t code, const char* message) {
  notices.Add("OnServiceCode", std::to_string(code) + ": " + message);
}

std::int32_t FrontEnd::OnChooseVideoFormat(const std::int32_t* formats, std::uint64_t count) {
  std::string notice = "OnChooseVideoFormat";
  for (std::uint64_t i = 0; i < count; ++i) notice += ' ' + std::to_string(formats[i]);
  notices.Add(notice);
  return qv_data_interface::QV_VIDEO_FORMAT_H264;
}

void FrontEnd::OnPlayRsp(std::uint32_t value1, std::uint64_t value2, std::uint32_t value3, std::uint32_t value4,
                         std::uint32_t value5, std::uint32_t value6, std::uint32_t value7, std::uint32_t value8,
                         std::uint32_t value9, std::uint32_t value10) {
  notices.Add("OnPlayRsp", value1, value2, value3, value4, value5, value6, value7, value8, value9, value10);
}

void FrontEnd::OnFirstFrame(std::uint64_t sequence, std::uint64_t /*time*/, std::uint64_t size, std::uint32_t format) {
  notices.Add(kFirstFrame, sequence, size, format);
}

std::int32_t FrontEnd::OnNotice8(const char* text) {
  notices.Add("OnNotice8", text);
  return 0;
}

void FrontEnd::OnVideoParamRsp(std::int32_t result, std::uint64_t value, std::uint16_t frameRate, std::uint32_t bitRate,
                               std::uint16_t width, std::uint16_t height) {
  notices.Add("OnVideoParamRsp", result, value, frameRate, bitRate, width, height);
}

void FrontEnd::OnIspList(const qv_data_interface::IspItem* items, std::uint64_t count) {
  std::string notice = "OnIspList";
  for (std::uint64_t i = 0; i < count; ++i) notice += ' ' + std::to_string(items[i].ispCode) + "=" + items[i].label;
  notices.Add(notice);
}

}  // namespace end_to_end
