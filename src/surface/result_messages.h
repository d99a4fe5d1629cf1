// The texts of the result codes.
#ifndef SURFACE_RESULT_MESSAGES_H
#define SURFACE_RESULT_MESSAGES_H

#include <cstdint>

namespace qv_data_interface {

// Empty for a code that is not the library's own. Valid as long as the library is loaded. From any thread.
const char* ResultMessage(std::int32_t code);

}  // namespace qv_data_interface

#endif
