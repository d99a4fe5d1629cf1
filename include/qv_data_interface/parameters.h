/// @file
/// The parameter records of the front end. The library copies what it needs during the call; the caller keeps
/// ownership.
#ifndef QV_DATA_INTERFACE_PARAMETERS_H
#define QV_DATA_INTERFACE_PARAMETERS_H

#include <cstdint>

namespace qv_data_interface {

/// The video formats that the library knows.
enum QvVideoFormat : std::uint32_t {
  QV_VIDEO_FORMAT_H264 = 264,  ///< H.264
  QV_VIDEO_FORMAT_H265 = 265   ///< H.265
};

/// The carrier line of the instance's default endpoints, for IQVDataInterface::ChangeIsp.
enum QvIspCode : std::uint32_t {
  kIspCodeDefault = 65536  ///< the default line
};

/// The video that the front end asks the phone for.
struct QvVideoParam {
  std::uint32_t videoFormat =
      QV_VIDEO_FORMAT_H264;      ///< a QvVideoFormat; what is played is chosen in OnChooseVideoFormat
  std::uint16_t width = 720;     ///< pixels, 100 to 4096
  std::uint16_t height = 1280;   ///< pixels, 100 to 4096
  std::uint16_t frameRate = 30;  ///< frames a second, 0 to 60
  std::uint32_t bitRate = 2048;  ///< not checked; handed on as it is
};

/// Time-outs and options of the services. Those that are handed on get their exact meaning from the service in use; the
/// comments say what the reference services make of them.
struct QvDataSystemParam {
  bool wsOptionEnabled = true;            ///< keep-alive on the WebSocket connection
  std::uint32_t wsManagerValue = 5000;    ///< each step to a playing WebSocket, ms, 1000 to 30000
  std::uint32_t wsOptionInterval = 3000;  ///< keep-alive interval, ms, 1000 to 60000; checked only when enabled
  bool useWss = true;                     ///< "wss://" when true, "ws://" when false
  std::uint32_t httpValue1 = 5000;        ///< HTTP connect time-out, ms, 1000 to 30000
  std::uint32_t httpValue2 = 5000;        ///< HTTP time-out of the whole request, ms, 1000 to 60000
};

/// The logger's settings. path and name must be NUL-terminated within their 256 characters. The last three integers are
/// the logger's; the comments say what the reference logger makes of them.
struct QvLogParam {
  std::int32_t level = 20;          ///< lines below it are dropped: 0 trace, 20 information, 60 failure
  char path[256] = "./QVLog";       ///< directory of the log files and of crash dumps
  char name[256] = "QV_DATA";       ///< name of the log files
  std::int32_t sizeSetting = 1024;  ///< KiB a file
  std::int32_t modeSetting = 0;     ///< 0: go on in the last file; 1: begin a new one
  std::int32_t countSetting = 5;    ///< files kept
};

// A host that packs its records in another way (/Zp, #pragma pack) is told here, before it can go wrong.
static_assert(sizeof(QvVideoParam) == 16 && sizeof(QvDataSystemParam) == 24 && sizeof(QvLogParam) == 528,
              "include this header with the compiler's default packing");

}  // namespace qv_data_interface

#endif
