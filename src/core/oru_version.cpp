// oruGetVersion: the version of this build of the library, set by the build
// from the project version.
#include "oru/core.h"

#ifndef ORU_VERSION_STRING
#error "the build defines ORU_VERSION_STRING"
#endif

extern "C" ORU_API const char* oruGetVersion(void) { return ORU_VERSION_STRING; }
