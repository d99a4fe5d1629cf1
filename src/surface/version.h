#ifndef SURFACE_VERSION_H
#define SURFACE_VERSION_H

namespace qv_data_interface {

inline constexpr char kVersion[] = "1.13.0";

}  // namespace qv_data_interface

#endif
