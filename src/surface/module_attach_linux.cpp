#include "surface/module_attach.h"

namespace qv_data_interface {
namespace {

// The loader runs a library's initialisers exactly once, when it attaches it.
[[maybe_unused]] const bool attached = (RegisterSdkType(), true);

}  // namespace
}  // namespace qv_data_interface
