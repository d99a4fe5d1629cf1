/// @file
/// The sink of one WebSocket connection's notices.
///
/// Threads: called on the WebSocket library's threads; the notices of one connection never overlap. No lock of the
/// library is held; every operation of IWSInterface and IWSManagerInterface may be called from inside, DestroyWS and
/// stop included. When DestroyWS or stop has returned no further notice of the connection begins, and none is running
/// unless it was called from inside a notice of any service: two services that stop each other from inside their
/// notices would wait for ever. Ownership: texts are NUL-terminated and valid during the call only.
#ifndef SDK_WS_INTERFACE_WS_INTERFACE_NOTIC_H
#define SDK_WS_INTERFACE_WS_INTERFACE_NOTIC_H

#include <cstdint>

/// The WebSocket library.
namespace ws_interface {

/// What a receiver of a connection's notices implements.
class IWSInterfaceNotic {
 public:
  /// 0 disconnected, 1 connecting, 2 connected.
  virtual void OnConnectState(std::uint32_t state) = 0;
  /// 5 name resolved, 0 connected.
  virtual void OnConnectStep(std::int32_t step) = 0;
  /// formats: the instance's video formats, separated by commas. Returns the chosen one, with which the library plays.
  virtual std::int32_t OnAuthRsp(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                                 const char* formats) = 0;
  /// The answer to play; comes before the first frame.
  virtual void OnPlayRsp(std::uint32_t value1, std::uint64_t value2, std::uint32_t value3, std::uint32_t value4,
                         std::uint32_t value5, std::uint32_t value6, std::uint32_t value7, std::uint32_t value8,
                         std::uint32_t value9, std::uint32_t value10) = 0;
  /// Pass-through.
  virtual void OnNotice5() = 0;
  /// A text, which the receiver sends back with SendReq9.
  virtual void OnNotice6(const char* text) = 0;
  /// Pass-through.
  virtual void OnNotice7() = 0;
  /// Pass-through.
  virtual void OnNotice8() = 0;
  /// Pass-through.
  virtual void OnNotice9(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3, std::uint32_t value4,
                         std::uint32_t value5) = 0;
  /// Pass-through.
  virtual void OnNotice10() = 0;
  /// The answer to a change of the video parameters; the last four are those in force when result is 0.
  virtual void OnVideoParamRsp(std::int32_t result, std::uint64_t value, std::uint16_t frameRate, std::uint32_t bitRate,
                               std::uint16_t width, std::uint16_t height) = 0;
  /// Pass-through.
  virtual void OnNotice12() = 0;
  /// Pass-through.
  virtual void OnNotice13(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3, std::uint32_t value4) = 0;
  /// Pass-through.
  virtual void OnNotice14() = 0;
  /// Not used by this library.
  virtual void OnNotice15() {}
  /// Not used by this library.
  virtual void OnNotice16() {}
  /// Not used by this library.
  virtual void OnNotice17() {}
  /// Not used by this library.
  virtual void OnNotice18() {}
  /// Not used by this library.
  virtual void OnNotice19() {}
  /// Not used by this library.
  virtual void OnNotice20() {}
  /// A code of the cloud service, with its text.
  virtual void OnErrorCode(std::uint32_t code, const char* text) = 0;
  /// The first video frame of a connection, also after a rebuild.
  virtual void OnFirstFrame(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3, std::uint32_t value4) = 0;
  /// Pass-through.
  virtual void OnNotice23() = 0;
  /// Pass-through.
  virtual void OnNotice24() = 0;
  /// Pass-through.
  virtual void OnNotice25() = 0;

  virtual ~IWSInterfaceNotic() = default;
};

}  // namespace ws_interface

#endif
