// Fakes of the five SDK libraries. They record every call, fail where told to, and keep what was handed to them.
//
// Threads: the library may call them from any thread. Tests set switches while no other thread calls, and read what was
// kept when the calls are over. Ownership: sinks are held weakly.
#ifndef TESTS_LIBRARY_FAKES_SERVICES_H
#define TESTS_LIBRARY_FAKES_SERVICES_H

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "pass_interface/message_collect.h"
#include "pass_interface/pass_interface_notic.h"
#include "ws_interface/ws_interface.h"
#include "ws_interface/ws_interface_notic.h"

namespace fakes {

// A connection that CreateWS made, with the records it was given, written out.
struct CreatedConnection {
  std::string url;
  std::string records;
  std::weak_ptr<ws_interface::IWSInterfaceNotic> sink;
  std::weak_ptr<ws_interface::IWSInterface> object;
  int timesDestroyed = 0;
};

struct SessionRow {
  std::string cipherText;
  std::int64_t expiry = 0;
};

struct CipherCall {
  std::vector<unsigned char> key;
  std::vector<unsigned char> iv;
  std::string input;
};

// What the services answer; 0 when they are well.
struct Answers {
  int passMissing = 0;
  int wsManagerMissing = 0;
  int collectorMissing = 0;
  int databaseMissing = 0;
  int passInitialiseResult = 0;
  int wsInitialiseResult = 0;
  int requestResult = 0;
  int commandResult = 0;
  int createWsFails = 0;
  int insertResult = 0;
  int updateResult = 0;
  int deleteResult = 0;
  int encryptFails = 0;
  int loadFailure = 0;
  int rowsAreSpoilt = 0;
  int saveResult = 0;
};

struct Services : Answers {
  // What they were given.
  std::weak_ptr<pass_interface::IPassInterfaceNotic> passSink;
  std::vector<CreatedConnection> connections;
  // HTTP services and WebSocket managers.
  std::vector<std::weak_ptr<void>> made;
  std::size_t stopped = 0;
  std::set<int> liveRows;
  int nextRow = 7;
  std::vector<std::shared_ptr<pass_interface::MessageCollect>> messages;
  std::map<std::string, SessionRow> sessionCache;
  std::int64_t minimumExpiry = 0;
  std::vector<CipherCall> cipherCalls;

  // Connections that were made and not destroyed; one that was destroyed twice counts too.
  int LiveConnections() const;
};

Services& State();
std::mutex& StateMutex();
void ResetServices();

// The status record of a message; an empty one when it carries none.
pass_interface::MessageCollectStatusData StatusOf(const pass_interface::MessageCollect& message);

}  // namespace fakes

#endif
