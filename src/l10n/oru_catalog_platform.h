// What the catalog loader needs from the platform.
#ifndef ORU_L10N_ORU_CATALOG_PLATFORM_H
#define ORU_L10N_ORU_CATALOG_PLATFORM_H

// The separator put between the parts of a catalog's path.
const char* oru_catalog_path_separator();

#endif  // ORU_L10N_ORU_CATALOG_PLATFORM_H
