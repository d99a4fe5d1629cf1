// The faults as options of the command line.
//
// Threads: the caller's. Ownership: the faults outlive the parsing.
#ifndef QV_CLOUD_FAULT_OPTIONS_H
#define QV_CLOUD_FAULT_OPTIONS_H

#include <CLI/CLI.hpp>

#include "tools/qv_cloud/cloud.h"

namespace qv_cloud {

void AddFaultOptions(CLI::App& app, Faults& faults);

}  // namespace qv_cloud

#endif
