// What happens when the process loads the library: the collector learns the SDK's type. Runs on the loading thread,
// under the loader's lock; nothing is done when a thread comes or goes, or on unload.
#include "collect_interface/collect_interface.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace qv_data_interface {
namespace {

void RegisterSdkType() noexcept {
  collect_interface::ICollectInterface::GetCollectInstance(false)->SetCollectSdkType("data_interface");
}

#ifndef _WIN32
// The loader runs a library's initialisers exactly once, when it attaches it.
[[maybe_unused]] const bool attached = (RegisterSdkType(), true);
#endif

}  // namespace
}  // namespace qv_data_interface

#ifdef _WIN32
extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD notification, LPVOID /*reserved*/) {
  if (notification == DLL_PROCESS_ATTACH) qv_data_interface::RegisterSdkType();
  return TRUE;
}
#endif
