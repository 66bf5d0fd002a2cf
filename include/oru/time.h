/*
 * oru/time.h - time values, calendar dates and sleeping.
 */
#ifndef ORU_TIME_H
#define ORU_TIME_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ORU_TIME_H */
