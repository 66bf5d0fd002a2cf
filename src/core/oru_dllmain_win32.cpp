// The loader's entry hook of oru.dll.
//
// The library asks for no per-thread notifications and does nothing else
// here: every facility initialises itself on first use, and thread clean-up
// is the reaper thread's job (src/thread), so nothing depends on being told
// of thread starts and ends, and nothing runs under the loader lock.

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(instance);
  return TRUE;
}
