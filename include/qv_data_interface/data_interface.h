/// @file
/// The object with which a front end connects to a phone in the cloud and drives the session with it.
#ifndef QV_DATA_INTERFACE_DATA_INTERFACE_H
#define QV_DATA_INTERFACE_DATA_INTERFACE_H

#include <cstdint>
#include <memory>

#include "qv_data_interface/export.h"
#include "qv_data_interface/notice.h"
#include "qv_data_interface/parameters.h"

namespace qv_data_interface {

/// One object is one connection; any number may live side by side. The expected order of calls: SetLogParam (optional,
/// first), Create, Init, GetPhoneConnect, commands, ReleasePhoneConnect. After a release Init may be called again.
/// Dropping the last pointer releases.
///
/// Threads: every operation may be called from any thread, from inside a notice too. Commands of different threads run
/// side by side.
/// Results: 0 is success and -1 the general failure (wrong state, bad argument, no connection); other values are those
/// of the service that did the work.
/// Ownership: texts and records are read or copied during the call.
/// The order of the operations is part of the binary interface.
class QV_DATA_INTERFACE_API IQVDataInterface {
 public:
  /// A new, independent object; never empty. Throws std::bad_alloc when memory is short.
  static std::shared_ptr<IQVDataInterface> Create();
  /// Sets up the process-wide logger and installs the crash-dump handler; with a null pointer, with the defaults of
  /// QvLogParam. Meant to be called once, early, from one thread; every call repeats the whole set-up.
  static void SetLogParam(QvLogParam* param);

  /// Readies the object. The four texts must not be null or empty; notice must hold an object and videoParam must not
  /// be null. systemParam may be null: its defaults are used. baseUrl may be null: the service's default address is
  /// used. modeFlag is handed to the services, as is reconnectNumber (with SendInReq17, each time the connection
  /// stands). Returns -1 for a bad argument, when the object is already initialised (release it first), while another
  /// Init or a release runs, or when a service cannot be made; for a record with a value out of range, a line in the
  /// log says which record. Otherwise the result of the services' initialisation.
  virtual std::int32_t Init(const char* credential1, const char* credential2, const char* credential3,
                            const char* targetId, std::int32_t modeFlag, std::shared_ptr<IQVDataInterfaceNotic> notice,
                            const QvVideoParam* videoParam, const QvDataSystemParam* systemParam,
                            std::int32_t reconnectNumber, const char* baseUrl) = 0;
  /// Ends the connection and lets go of notice and services. Waits for notices that are running on services' threads,
  /// unless called from inside a notice; see IQVDataInterfaceNotic. With the reference services it waits for no network
  /// and brings no notice. The cached session stays for the next connect. Does nothing when the object is not
  /// initialised, or while another release runs.
  virtual void ReleasePhoneConnect() = 0;
  /// Starts the connection: from the cached session when one is valid for ten more minutes, otherwise by asking the
  /// service, whose answer comes through the notices. Returns 0 when started, -1 when not initialised, when a connect
  /// has already been started since Init, when the service took no request (the call may then be repeated), or when a
  /// release overtook the call.
  virtual std::int32_t GetPhoneConnect() = 0;

  /// @name Commands
  /// Each is handed to the connection at once, in any thread, and returns its result: 0 when the connection has taken
  /// it over, a negative code of the WebSocket library's otherwise; -1 until GetPhoneConnect has returned 0, after a
  /// release, without a connection or for a bad argument. Nothing waits for the phone. What was handed over just before
  /// ChangeIsp or a release may not reach the phone any more. 64-bit values are handed on untouched (integers or
  /// pointers of the front end). Texts are UTF-8, copied during the call. The session protocol of the front end gives
  /// the numbered ones their meaning.
  ///@{
  /// Command 3. count must not be 0.
  virtual std::int32_t SendInReq3(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                                  std::int32_t count) = 0;
  /// Command 4.
  virtual std::int32_t SendInReq4(std::uint64_t value1, std::uint64_t value2) = 0;
  /// Command 5.
  virtual std::int32_t SendInReq5(float value1, float value2, float value3, float value4, float value5, float value6,
                                  float value7, float value8) = 0;
  /// Command 6.
  virtual std::int32_t SendInReq6(std::int32_t value1, float value2, float value3, float value4) = 0;
  /// Command 7. Neither text may be null.
  virtual std::int32_t SendInReq7(const char* text1, const char* text2) = 0;
  /// Command 8. The text must not be null.
  virtual std::int32_t SendInReq8(const char* text) = 0;
  /// Command 9. The text must not be null.
  virtual std::int32_t SendInReq9(const char* text) = 0;
  /// Command 10.
  virtual std::int32_t SendInReq10(std::uint64_t value1, std::uint64_t value2) = 0;
  /// Command 11.
  virtual std::int32_t SendInReq11(std::uint64_t value1, std::uint64_t value2, std::uint64_t value3,
                                   std::int32_t value4) = 0;
  /// The microphone's parameters.
  virtual std::int32_t SendInMicParamReq(std::int32_t value1, std::int32_t value2, std::int32_t value3) = 0;
  /// Command 13.
  virtual std::int32_t SendInReq13(std::uint64_t value1, std::uint64_t value2) = 0;
  /// The camera's parameters. videoFormat must not be 265: the camera path takes no H.265.
  virtual std::int32_t SendInCameraParamReq(std::int32_t videoFormat, std::int32_t value2, std::int32_t value3,
                                            std::uint64_t value4, std::int32_t value5) = 0;
  /// Command 15.
  virtual std::int32_t SendInReq15(std::uint64_t value1, std::uint64_t value2) = 0;
  /// Command 16.
  virtual std::int32_t SendInReq16(std::uint64_t value1, std::uint64_t value2) = 0;
  /// Command 17. The library sends it by itself each time the connection stands, with Init's reconnectNumber;
  /// not when it stands before GetPhoneConnect has returned.
  virtual std::int32_t SendInReq17(std::int32_t value) = 0;
  ///@}

  /// Moves the connection to another carrier line: ispCode is one of OnIspList, or kIspCodeDefault. The connection is
  /// dropped and built anew. 0 when it is being built or when the line is the current one; -1 until GetPhoneConnect has
  /// returned 0, after a release or when one overtakes the call, for an unknown line (before the answer that brings the
  /// lines, for each but the current one), or when the connection could not be built (the line counts as chosen all the
  /// same). Calls of several threads wait for each other; from inside a notice a call returns -1 when another one is at
  /// work. A new connect goes to the default line, yet the line last chosen here still counts as the current one, also
  /// after a release.
  virtual std::int32_t ChangeIsp(std::uint32_t ispCode) = 0;

  /// Releases as ReleasePhoneConnect does, on whichever thread drops the last pointer.
  virtual ~IQVDataInterface();

  /// For those who implement the interface, as the next two.
  IQVDataInterface();
  /// Copies nothing: the interface has no data.
  IQVDataInterface(const IQVDataInterface& other);
  /// Copies nothing: the interface has no data.
  IQVDataInterface& operator=(const IQVDataInterface& other);
};

}  // namespace qv_data_interface

#endif
