// What the library tells the front end.
#ifndef QV_DATA_INTERFACE_NOTICE_H
#define QV_DATA_INTERFACE_NOTICE_H

#include <cstdint>

namespace qv_data_interface {

// One carrier line of the instance.
struct IspItem {
  std::int32_t ispCode;
  const char* label;  // valid during the notice only
};

// The front end implements this and gives it to IQVDataInterface::Init, which keeps it until ReleasePhoneConnect.
//
// Threads: a notice comes on the thread that caused it: the HTTP service's, the WebSocket library's, or the front end's
// own inside its call: OnIspList and kResultWsInitFailed inside GetPhoneConnect with a session from the cache,
// kResultWsInitFailed inside ChangeIsp. The notices of one WebSocket connection do not overlap each other; others may
// overlap them.
// Re-entry: no lock is held. Every operation of the library may be called from inside a notice, ReleasePhoneConnect and
// the dropping of the last pointer included. ChangeIsp from inside a notice, of any object, returns -1 when another
// ChangeIsp is at work.
// Last notice: when the ReleasePhoneConnect that did the work has returned, no further notice begins on a service's
// thread, and none is running there. Two exceptions: a release from inside a notice (of any object) does not wait for
// the notices of other threads; and a GetPhoneConnect or ChangeIsp that another thread of the front end is in may still
// bring its own.
// Ownership: texts are UTF-8, NUL-terminated and valid during the call only, like lists.
//
// The notices named after their number are relayed from the phone unchanged; the session protocol of the front end
// gives them their meaning. The order of the operations is part of the binary interface.
class IQVDataInterfaceNotic {
 public:
  // A result or an error: a QvResultCode with its text, or the cloud service's own code and text. Code 0 says that the
  // connection stands. A lost connection is reported as kResultWsDisconnect, and each attempt to connect as
  // kResultWsConnecting: the WebSocket library rebuilds it without the front end's help, unless the service refused the
  // session, which is reported with the service's code.
  virtual void OnStatus(std::int32_t code, const char* message) = 0;
  // The service's code 60102029, with its text.
  virtual void OnServiceCode(std::int32_t /*code*/, const char* /*message*/) {}
  // The phone offers these video formats (264, 265); return the one to play. Comes once for each authentication, with
  // what all authentications of this object have offered so far: a format may stand there several times.
  virtual std::int32_t OnChooseVideoFormat(const std::int32_t* formats, std::uint64_t count) = 0;
  // The phone's answer to play.
  virtual void OnPlayRsp(std::uint32_t /*value1*/, std::uint64_t /*value2*/, std::uint32_t /*value3*/,
                         std::uint32_t /*value4*/, std::uint32_t /*value5*/, std::uint32_t /*value6*/,
                         std::uint32_t /*value7*/, std::uint32_t /*value8*/, std::uint32_t /*value9*/,
                         std::uint32_t /*value10*/) {}
  // A first video frame is there.
  virtual void OnFirstFrame(std::uint64_t /*value1*/, std::uint64_t /*value2*/, std::uint64_t /*value3*/,
                            std::uint32_t /*value4*/) {}
  virtual void OnNotice6() {}
  virtual void OnNotice7() {}
  // The result is not used.
  virtual std::int32_t OnNotice8(const char* /*text*/) { return 0; }
  virtual void OnNotice9() {}
  virtual void OnNotice10() {}
  virtual void OnNotice11() {}
  virtual void OnNotice12(std::uint64_t /*value1*/, std::uint64_t /*value2*/, std::uint64_t /*value3*/,
                          std::uint32_t /*value4*/, std::uint32_t /*value5*/) {}
  virtual void OnNotice13() {}
  // The phone's answer to a change of the video parameters. With result 0 the last four are in force, and a later
  // connection asks for them.
  virtual void OnVideoParamRsp(std::int32_t /*result*/, std::uint64_t /*value*/, std::uint16_t /*frameRate*/,
                               std::uint32_t /*bitRate*/, std::uint16_t /*width*/, std::uint16_t /*height*/) {}
  virtual void OnNotice15() {}
  virtual void OnNotice16(std::uint64_t /*value1*/, std::uint64_t /*value2*/, std::uint64_t /*value3*/,
                          std::uint32_t /*value4*/) {}
  virtual void OnNotice17() {}
  // The carrier lines of the instance, for ChangeIsp; the default line (kIspCodeDefault) is not among them. With no
  // lines items is null and count 0. Comes once for each granted or cached session.
  virtual void OnIspList(const IspItem* /*items*/, std::uint64_t /*count*/) {}
  virtual void OnNotice19() {}

  virtual ~IQVDataInterfaceNotic() = default;
};

}  // namespace qv_data_interface

#endif
