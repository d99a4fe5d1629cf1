/// @file
/// The records that CreateWS reads. Their layout is binding: widths, order and padding are the binary interface.
/// Every text is NUL-terminated within its 256 characters and zero-filled behind the NUL.
#ifndef SDK_WS_INTERFACE_WS_RECORDS_H
#define SDK_WS_INTERFACE_WS_RECORDS_H

#include <cstdint>

namespace ws_interface {

/// Who connects.
struct WSConnectInfo {
  char sessionIdText[256];  ///< the session; a secret
  char identityText[256];   ///< the phone
  char versionText[256];    ///< of this library
  std::int32_t clientKind;  ///< 3
  std::int32_t initNumber;  ///< the front end's modeFlag
  char auxText[256];        ///< empty
  std::int32_t streamKind;  ///< 2
  std::int64_t reserved;    ///< 0
};

/// As QvVideoParam.
struct WSVideoParam {
  std::uint32_t videoFormat;  ///< 264 or 265
  std::uint16_t width;        ///< pixels
  std::uint16_t height;       ///< pixels
  std::uint16_t frameRate;    ///< frames a second
  std::uint32_t bitRate;      ///< as the front end gave it, or the phone has granted since
};

/// The video to ask for.
struct WSVideoInfo {
  WSVideoParam videoParam;  ///< of the front end, or, the format aside, those of the last OnVideoParamRsp with result 0
  char text1[256];          ///< empty
  char text2[256];          ///< empty
};

/// Constants of this library.
struct WSDefaultParam {
  std::uint8_t value1;  ///< 1
  std::int32_t value2;  ///< 48000
  std::uint8_t value3;  ///< 2
  std::uint8_t value4;  ///< 0
};

/// Options of the connection.
struct WSSystemParam {
  std::uint8_t wsOptionEnabled;   ///< 1: keep-alive
  std::int32_t wsOptionInterval;  ///< of the keep-alive, ms
  std::uint8_t useWss;            ///< 1: "wss://"
  std::uint8_t value4;            ///< 0
};

}  // namespace ws_interface

#endif
