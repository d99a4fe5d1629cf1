// In every library of the services: a thread may still be in its code, and another library may hold an object that it
// made, when the host has freed it. So it stays until the process ends, as it does on Linux by a flag in its file.
#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD notification, LPVOID /*reserved*/) {
  if (notification == DLL_PROCESS_ATTACH) {
    HMODULE pinned = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                         reinterpret_cast<LPCWSTR>(module), &pinned);
  }
  return TRUE;
}
