#ifndef SURFACE_BUILD_IDENTITY_H
#define SURFACE_BUILD_IDENTITY_H

namespace qv_data_interface {

// See qv_data_interface/build_check.h. Volatile, so that whoever reads it keeps it in the library's file.
extern const volatile char buildIdentity[];

}  // namespace qv_data_interface

#endif
