// What a result code means to the one who reads it, and what to do; docs/result-codes.md says more.
//
// Threads: no state. Ownership: the texts are constants.
#ifndef TOOLS_QV_CONNECT_RESULT_HELP_H
#define TOOLS_QV_CONNECT_RESULT_HELP_H

#include <string>

namespace qv_connect {

struct ResultHelp {
  const char* text;  // the library's; empty for a code of the cloud's
  const char* meaning;
  const char* advice;
};

// code is a number in decimal, as the collector keeps it.
const ResultHelp& HelpFor(const std::string& code);

}  // namespace qv_connect

#endif
