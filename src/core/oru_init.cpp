// Start-up.  Every facility with global state initialises itself on first
// use, so there is nothing to do here; the call exists so that applications
// have a formal start-up point.

#include "core/oru_internal.h"

// The loader hook is a Windows matter (asking for no per-thread
// notifications); on POSIX nothing runs at load or unload, and thread
// clean-up is the reaper's job either way.

extern "C" ORU_API oruResult oruInitialize(void) { return ORU_OK; }
