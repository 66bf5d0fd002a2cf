/*
 * oru/unicode.h - UTF-8/UTF-16 primitives, character properties, case mapping and normalization.
 */
#ifndef ORU_UNICODE_H
#define ORU_UNICODE_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ORU_UNICODE_H */
