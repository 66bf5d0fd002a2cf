/*
 * oru/file.h - files, directories and paths.
 */
#ifndef ORU_FILE_H
#define ORU_FILE_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ORU_FILE_H */
