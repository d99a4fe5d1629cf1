#include <windows.h>

#include "surface/module_attach.h"

namespace {

void KeepLoaded(HINSTANCE module) {
  HMODULE pinned = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                     reinterpret_cast<LPCWSTR>(module), &pinned);
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD notification, LPVOID /*reserved*/) {
  if (notification == DLL_PROCESS_ATTACH) {
    KeepLoaded(module);
    qv_data_interface::RegisterSdkType();
  }
  return TRUE;
}
