/// @file
/// What the library tells the front end.
#ifndef QV_DATA_INTERFACE_NOTICE_H
#define QV_DATA_INTERFACE_NOTICE_H

#include <cstdint>

/// Everything that a front end uses.
namespace qv_data_interface {

/// One carrier line of the instance.
struct IspItem {
  std::int32_t ispCode;  ///< the line's code, for IQVDataInterface::ChangeIsp
  const char* label;     ///< its name, UTF-8; valid during the notice only
};

/// The front end implements this and gives it to IQVDataInterface::Init, which keeps it until ReleasePhoneConnect.
///
/// **Threads.** A notice comes on the thread that caused it. That is the WebSocket library's, with these exceptions:
/// OnIspList, kResultWsInitFailed and the codes of phone-connect and refresh-session come on the HTTP service's;
/// OnIspList and kResultWsInitFailed come on the front end's own inside GetPhoneConnect when the session is from the
/// cache; kResultWsInitFailed comes there inside ChangeIsp. The notices of one WebSocket connection do not overlap each
/// other; all others may overlap them and each other.
///
/// **Order.** Of one WebSocket connection: OnStatus(kResultWsConnecting), OnChooseVideoFormat,
/// OnStatus(kResultSuccess), OnPlayRsp, OnFirstFrame; after OnChooseVideoFormat the relayed notices, OnServiceCode and
/// errors at any place. The error of a refused authentication comes instead of OnChooseVideoFormat. After
/// OnStatus(kResultWsDisconnect) it begins again. That is the order of the reference WebSocket library: this library
/// passes on what comes, when it comes. OnIspList comes once for each session, at any place relative to these.
///
/// **Re-entry.** Every operation of the library may be called from inside a notice, ReleasePhoneConnect and the
/// dropping of the last pointer included; the object lives until the notice has returned. No lock is held that any of
/// them waits for: ChangeIsp from inside a notice, of any object, returns -1 when another ChangeIsp is at work. A
/// notice that does not return holds up the ones that would follow on its thread, and a release from another thread.
///
/// **The last one.** When the ReleasePhoneConnect that did the work has returned, no further notice begins on a
/// service's thread, and none is running there. Two exceptions: a release from inside a notice (of any object) does not
/// wait for the notices of other threads; and a GetPhoneConnect or ChangeIsp that another thread of the front end is in
/// may still bring its own. The notices of a connection that ChangeIsp replaces end in the same way before those of the
/// next begin. A release brings no notice of its own.
///
/// **Ownership.** Texts are UTF-8, NUL-terminated and valid during the call only, like lists.
///
/// **Exceptions.** None may leave a notice.
///
/// A relayed notice comes from the phone unchanged; the session protocol of the front end gives it its meaning. Those
/// without a name of their own:
///
/// | notice | WebSocket notice | carries |
/// |---|---|---|
/// | OnNotice6  | 23 | nothing |
/// | OnNotice7  | 5  | nothing |
/// | OnNotice8  | 6  | a text, which the library then sends back to the phone |
/// | OnNotice9  | 7  | nothing |
/// | OnNotice10 | 8  | nothing |
/// | OnNotice11 | 24 | nothing |
/// | OnNotice12 | 9  | three 64-bit and two 32-bit numbers |
/// | OnNotice13 | 10 | nothing |
/// | OnNotice15 | 12 | nothing |
/// | OnNotice16 | 13 | three 64-bit numbers and one of 32 bits |
/// | OnNotice17 | 25 | nothing |
/// | OnNotice19 | 14 | nothing |
///
/// The order of the operations is part of the binary interface.
class IQVDataInterfaceNotic {
 public:
  /// A result or an error: a QvResultCode with its text, or the cloud service's own code and text.
  ///
  /// | code | thread | comes |
  /// |---|---|---|
  /// | kResultSuccess | WebSocket | each time the connection stands, after OnChooseVideoFormat |
  /// | kResultWsConnecting | WebSocket | at the begin of each attempt to connect, the first included |
  /// | kResultWsDisconnect | WebSocket | when the connection is lost, could not be made or was refused |
  /// | kResultWsInitFailed | HTTP or own | when no connection object could be made |
  /// | kResultPhoneConnectFailed | HTTP | instead of a session |
  /// | kResultPhoneConnectNot200 | HTTP | instead of a session |
  /// | kResultRefreshSessionFailed | HTTP | when the session could not be renewed |
  /// | kResultRefreshSessionNot200 | HTTP | when the session could not be renewed |
  /// | the service's own | HTTP | as the answer to phone-connect or refresh-session, which it refuses |
  /// | the service's own | WebSocket | when the phone refuses the authentication, and at any time after it |
  ///
  /// A lost connection is rebuilt by the WebSocket library without the front end's help, unless the service refused the
  /// session. A refused refresh ends the connection.
  virtual void OnStatus(std::int32_t code, const char* message) = 0;
  /// The service's code 60102029, with its text. On the WebSocket library's thread, when the phone refuses the
  /// authentication with it, and at any time after it.
  virtual void OnServiceCode(std::int32_t /*code*/, const char* /*message*/) {}
  /// The phone offers these video formats (264, 265); return the one to play. Comes once for each authentication, on
  /// the WebSocket library's thread, between OnStatus(kResultWsConnecting) and OnStatus(kResultSuccess), with what all
  /// authentications of this object have offered so far: a format may stand there several times. count is never 0. The
  /// result is used as it is, also when it was not offered. The connection waits for it.
  virtual std::int32_t OnChooseVideoFormat(const std::int32_t* formats, std::uint64_t count) = 0;
  /// The phone's answer to play. On the WebSocket library's thread, once for each connection, after OnChooseVideoFormat
  /// and before OnFirstFrame.
  virtual void OnPlayRsp(std::uint32_t /*value1*/, std::uint64_t /*value2*/, std::uint32_t /*value3*/,
                         std::uint32_t /*value4*/, std::uint32_t /*value5*/, std::uint32_t /*value6*/,
                         std::uint32_t /*value7*/, std::uint32_t /*value8*/, std::uint32_t /*value9*/,
                         std::uint32_t /*value10*/) {}
  /// A first video frame is there: of the first connection, and again after each rebuild or change of line. On the
  /// WebSocket library's thread, after OnPlayRsp. The reference library tells the frame's number, its time in ms, the
  /// size of its payload in bytes and its format.
  virtual void OnFirstFrame(std::uint64_t /*value1*/, std::uint64_t /*value2*/, std::uint64_t /*value3*/,
                            std::uint32_t /*value4*/) {}
  /// Relayed. On the WebSocket library's thread, at any time after the authentication, as all relayed notices.
  virtual void OnNotice6() {}
  /// Relayed, see OnNotice6.
  virtual void OnNotice7() {}
  /// Relayed, see OnNotice6. When it has returned, the library sends the text back over the connection that stands
  /// then; not after a release. The result is not used.
  virtual std::int32_t OnNotice8(const char* /*text*/) { return 0; }
  /// Relayed, see OnNotice6.
  virtual void OnNotice9() {}
  /// Relayed, see OnNotice6.
  virtual void OnNotice10() {}
  /// Relayed, see OnNotice6.
  virtual void OnNotice11() {}
  /// Relayed, see OnNotice6.
  virtual void OnNotice12(std::uint64_t /*value1*/, std::uint64_t /*value2*/, std::uint64_t /*value3*/,
                          std::uint32_t /*value4*/, std::uint32_t /*value5*/) {}
  /// Relayed, see OnNotice6.
  virtual void OnNotice13() {}
  /// Relayed, see OnNotice6: the phone's answer to a change of the video parameters. With result 0 the last four
  /// (frames a second, bit rate, pixels, pixels) are in force, and a later connection asks for them.
  virtual void OnVideoParamRsp(std::int32_t /*result*/, std::uint64_t /*value*/, std::uint16_t /*frameRate*/,
                               std::uint32_t /*bitRate*/, std::uint16_t /*width*/, std::uint16_t /*height*/) {}
  /// Relayed, see OnNotice6.
  virtual void OnNotice15() {}
  /// Relayed, see OnNotice6.
  virtual void OnNotice16(std::uint64_t /*value1*/, std::uint64_t /*value2*/, std::uint64_t /*value3*/,
                          std::uint32_t /*value4*/) {}
  /// Relayed, see OnNotice6.
  virtual void OnNotice17() {}
  /// The carrier lines of the instance as the service names them, for IQVDataInterface::ChangeIsp, which also takes the
  /// default line (kIspCodeDefault). With no lines items is null and count 0. Comes once for each granted or cached
  /// session, unless a release overtakes it: behind the start of its WebSocket connection, whose notices may come
  /// before, during or after it, also when none could be made. It comes on the HTTP service's thread for a granted
  /// session, inside GetPhoneConnect for a cached one. For a cached one commands and ChangeIsp return -1 until
  /// GetPhoneConnect has returned.
  virtual void OnIspList(const IspItem* /*items*/, std::uint64_t /*count*/) {}
  /// Relayed, see OnNotice6.
  virtual void OnNotice19() {}

  /// Runs on whichever thread lets go of the last pointer, which may be a service's.
  virtual ~IQVDataInterfaceNotic() = default;
};

}  // namespace qv_data_interface

#endif
