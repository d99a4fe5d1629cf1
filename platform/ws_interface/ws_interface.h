/// @file
/// One WebSocket connection to an instance.
///
/// Threads: every operation may be called from any thread, from inside a notice too.
/// Results: 0 when the request was taken over, a negative code of the library's own otherwise.
/// Ownership: texts are copied during the call. 64-bit values are integers or pointers to which the library and the
/// front end give their meaning.
#ifndef SDK_WS_INTERFACE_WS_INTERFACE_H
#define SDK_WS_INTERFACE_WS_INTERFACE_H

#include <cstdint>

namespace ws_interface {

/// A connection that IWSManagerInterface has made. It rebuilds itself when it is lost.
class IWSInterface {
 public:
  /// The session id with which this connection goes on, and authenticates from now on.
  virtual std::int32_t SetSessionId(const char* sessionId) = 0;
  /// Pass-through.
  virtual std::int32_t SendReq2(std::uint64_t value1, std::uint64_t value2) = 0;
  /// Pass-through.
  virtual std::int32_t SendReq3(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                                std::int32_t count) = 0;
  /// Pass-through.
  virtual std::int32_t SendReq4(float value1, float value2, float value3, float value4, float value5, float value6,
                                float value7, float value8) = 0;
  /// Pass-through.
  virtual std::int32_t SendReq5(std::int32_t value1, float value2, float value3, float value4) = 0;
  /// Pass-through.
  virtual std::int32_t SendReq6(const char* text1, const char* text2) = 0;
  /// Pass-through.
  virtual std::int32_t SendReq7(const char* text) = 0;
  /// Pass-through.
  virtual std::int32_t SendReq8(const char* text) = 0;
  /// The answer to notice 6: its text, and 0.
  virtual std::int32_t SendReq9(const char* text, std::int32_t value) = 0;
  /// Pass-through.
  virtual std::int32_t SendReq10(std::uint64_t value1, std::uint64_t value2) = 0;
  /// Pass-through.
  virtual std::int32_t SendReq11(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                                 std::int32_t value4) = 0;
  /// The microphone's parameters.
  virtual std::int32_t SendMicParamReq(std::int32_t value1, std::int32_t value2, std::int32_t value3) = 0;
  /// Pass-through.
  virtual std::int32_t SendReq13(std::uint64_t value1, std::uint64_t value2) = 0;
  /// The camera's parameters.
  virtual std::int32_t SendCameraParamReq(std::int32_t videoFormat, std::int32_t value2, std::int32_t value3,
                                          std::uint64_t value4, std::int32_t value5) = 0;
  /// Pass-through.
  virtual std::int32_t SendReq15(std::uint64_t value1, std::uint64_t value2) = 0;
  /// Pass-through.
  virtual std::int32_t SendReq16(std::uint64_t value1, std::uint64_t value2) = 0;
  /// Pass-through.
  virtual std::int32_t SendReq17(std::int32_t value) = 0;
  /// The request without arguments.
  virtual std::int32_t SendDummyReq() = 0;

  virtual ~IWSInterface() = default;
};

}  // namespace ws_interface

#endif
