/*
 * oru/decimal.h - IEEE 754-2008 decimal floating point (BID encoding).
 */
#ifndef ORU_DECIMAL_H
#define ORU_DECIMAL_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ORU_DECIMAL_H */
