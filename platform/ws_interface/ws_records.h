// The records that CreateWS reads. Their layout is binding: widths, order and padding are the binary interface.
// Every text is NUL-terminated within its 256 characters and zero-filled behind the NUL.
#ifndef SDK_WS_INTERFACE_WS_RECORDS_H
#define SDK_WS_INTERFACE_WS_RECORDS_H

#include <cstdint>

namespace ws_interface {

struct WSConnectInfo {
  char sessionIdText[256];
  char identityText[256];
  char versionText[256];
  std::int32_t clientKind;
  std::int32_t initNumber;
  char auxText[256];
  std::int32_t streamKind;
  std::int64_t reserved;
};

struct WSVideoParam {
  std::uint32_t videoFormat;
  std::uint16_t width;
  std::uint16_t height;
  std::uint16_t frameRate;
  std::uint32_t bitRate;
};

struct WSVideoInfo {
  WSVideoParam videoParam;
  char text1[256];
  char text2[256];
};

struct WSDefaultParam {
  std::uint8_t value1;
  std::int32_t value2;
  std::uint8_t value3;
  std::uint8_t value4;
};

struct WSSystemParam {
  std::uint8_t wsOptionEnabled;
  std::int32_t wsOptionInterval;
  std::uint8_t useWss;
  std::uint8_t value4;
};

}  // namespace ws_interface

#endif
