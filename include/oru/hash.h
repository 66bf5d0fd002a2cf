/*
 * oru/hash.h - checksums, hashes, DES and random numbers.
 */
#ifndef ORU_HASH_H
#define ORU_HASH_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ORU_HASH_H */
