// The collector's database: collector.db, SQLite, in the data directory. Whoever wants to see what a connection did
// reads it with plain SQL, also while the collector writes. All times are milliseconds since 1970-01-01 UTC; 0: has not
// come.
//
//   instances    one row for each connection that stands: inserted when it begins, deleted when it is released
//   messages     every status message in the order of its arrival (id rises); its columns are the message's fields
//   milestones   the milestones of each message, one row each
//
// The timeline of the newest message that has one:
//
//   SELECT name, time FROM milestones
//   WHERE message_id = (SELECT max(message_id) FROM milestones) ORDER BY time;
//
// session holds no session id, which would let a reader of this file take the session over, but the first 16
// hexadecimal digits of its SHA-256: enough to tell which rows belong together. An empty session id stays empty.
// Bounded: the oldest messages go, with their milestones, past about kMaxMessages, the oldest instances past
// kMaxInstances (those of processes that died), and a text is cut at kMaxTextBytes.
#ifndef REFERENCE_COLLECT_INTERFACE_SCHEMA_H
#define REFERENCE_COLLECT_INTERFACE_SCHEMA_H

#include <cstddef>
#include <cstdint>

namespace collect_interface {

constexpr char kDatabaseFile[] = "collector.db";

constexpr std::int64_t kMaxMessages = 10000;
constexpr std::int64_t kMaxInstances = 1000;
constexpr std::size_t kMaxTextBytes = 4096;

// A connection must not wait for a disk: nothing is synchronised. A row survives the death of the process all the same;
// a power cut may cost the file, which is then made anew.
// Run each time the file is opened; synchronous comes first, so that making the file waits for no disk either.
constexpr char kSchema[] = R"(
  PRAGMA synchronous=OFF;
  PRAGMA journal_mode=WAL;
  CREATE TABLE IF NOT EXISTS instances (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    target_id TEXT NOT NULL,
    session TEXT NOT NULL,
    default_mode INTEGER NOT NULL,
    channel TEXT NOT NULL,
    sdk_type TEXT NOT NULL
  ) STRICT;
  CREATE TABLE IF NOT EXISTS messages (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    sdk_type TEXT NOT NULL,
    collect_type INTEGER NOT NULL,
    collect_status INTEGER NOT NULL,
    default_mode INTEGER NOT NULL,
    timestamp INTEGER NOT NULL,
    tag TEXT NOT NULL,
    session TEXT NOT NULL,
    target_id TEXT NOT NULL,
    channel TEXT NOT NULL,
    ws_domain TEXT NOT NULL,
    ws_port TEXT NOT NULL,
    error_code TEXT NOT NULL,
    status_text TEXT NOT NULL,
    sdk_version TEXT NOT NULL,
    interface_version TEXT NOT NULL,
    play_response_time INTEGER NOT NULL,
    first_frame_time INTEGER NOT NULL,
    release_time INTEGER NOT NULL,
    connecting_count INTEGER NOT NULL,
    connecting_time INTEGER NOT NULL,
    disconnected_time INTEGER NOT NULL,
    connected_time INTEGER NOT NULL,
    connected_flag INTEGER NOT NULL,
    detail_text TEXT NOT NULL,
    extra_text TEXT NOT NULL,
    process_name TEXT NOT NULL
  ) STRICT;
  CREATE TABLE IF NOT EXISTS milestones (
    message_id INTEGER NOT NULL REFERENCES messages (id) ON DELETE CASCADE,
    name TEXT NOT NULL,
    time INTEGER NOT NULL,
    PRIMARY KEY (message_id, name)
  ) STRICT, WITHOUT ROWID;
)";

}  // namespace collect_interface

#endif
