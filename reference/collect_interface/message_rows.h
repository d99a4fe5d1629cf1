// Turns a status message into its rows.
// Threads: as the connection. Ownership: keeps nothing.
#ifndef REFERENCE_COLLECT_INTERFACE_MESSAGE_ROWS_H
#define REFERENCE_COLLECT_INTERFACE_MESSAGE_ROWS_H

#include <string_view>

#include "pass_interface/message_collect.h"
#include "reference/common/sqlite.h"

namespace collect_interface {

// The text, or as many whole UTF-8 characters of it as the schema allows.
std::string_view Bounded(std::string_view text);

// Inserts the message with its milestones, and drops messages past the bound now and then. Data of another kind than
// status data leaves the status columns empty.
// REQUIRES: a transaction is open.
void InsertMessage(reference::sqlite::Connection& database, const pass_interface::MessageCollect& message,
                   std::string_view sdkType);

}  // namespace collect_interface

#endif
