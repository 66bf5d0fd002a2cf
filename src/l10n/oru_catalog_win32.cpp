// Catalog paths on Windows.
#include "oru_catalog_platform.h"

const char* oru_catalog_path_separator() { return "\\"; }
