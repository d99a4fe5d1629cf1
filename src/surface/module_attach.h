// What happens when the process loads the library: the collector learns the SDK's type. Runs on the loading thread,
// under the loader's lock; nothing is done when a thread comes or goes, or on unload.
//
// Once loaded, the library stays until the process ends: the services hold objects that it made, a crash hook of its
// among them, and their threads may still be in its code when the host frees it. Freeing it is harmless, and loading it
// again finds it there.
#ifndef QV_SURFACE_MODULE_ATTACH_H
#define QV_SURFACE_MODULE_ATTACH_H

#include "collect_interface/collect_interface.h"
#include "surface/build_identity.h"

namespace qv_data_interface {

inline void RegisterSdkType() noexcept {
  // Keeps the text from being left out of the file as unused.
  static_cast<void>(buildIdentity[0]);
  collect_interface::ICollectInterface::GetCollectInstance(false)->SetCollectSdkType("data_interface");
}

}  // namespace qv_data_interface

#endif
