/**
 * @file
 * oru/time.h - time values, calendar dates and sleeping.
 */
#ifndef ORU_TIME_H
#define ORU_TIME_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A point in time: seconds since 1970-01-01 00:00:00 UTC and microseconds,
 * normally 0 to 999999.  Also used as a span (the result of oruTimeValSub).
 *
 * The seconds are a signed 32-bit number, so a time value reaches only from
 * 1901-12-13 20:45:52 to 2038-01-19 03:14:07 UTC.  Nothing in the library
 * widens them:
 *  - after 2038-01-19 03:14:07 UTC, oruGetCurrentTime gives the system time
 *    modulo 2^32 seconds, a time 136 years earlier (03:14:08 that day reads
 *    as 1901-12-13 20:45:52), and the calendar functions convert that value
 *    as it stands;
 *  - oruTimeValAdd and oruTimeValSub wrap the same way, so a deadline
 *    computed past 2038-01-19 03:14:07 lands in 1901: it compares as long
 *    passed, and a timed wait on it (oruCondVarTimedWait) times out at once;
 *  - oruTimeValCmp compares the signed values and so orders wrongly across
 *    the wrap. */
typedef struct oruTimeVal {
  int32_t sec;  /**< seconds since the epoch (or of a span) */
  int32_t usec; /**< microseconds */
} oruTimeVal;

/** A broken-down calendar time.  The field order is part of the interface:
 * note that the day of the month comes before the day of the week. */
typedef struct oruDateTime {
  uint32_t year;         /**< the year, e.g. 2026 */
  uint32_t month;        /**< 1 to 12 */
  uint32_t day;          /**< day of the month, 1 to 31 */
  uint32_t dayOfWeek;    /**< 0 = Sunday */
  uint32_t hour;         /**< 0 to 23 */
  uint32_t minute;       /**< 0 to 59 */
  uint32_t second;       /**< 0 to 59 */
  uint32_t milliseconds; /**< 0 to 999 */
} oruDateTime;

/** The current time.  Always ORU_OK (ORU_E_INVALID_ARG for a null pointer). */
ORU_API oruResult oruGetCurrentTime(oruTimeVal* now);

/** @{ */
/** A time value as calendar time in the local time zone or in UTC.  Null
 * pointers give ORU_E_INVALID_ARG; a time the system cannot convert gives
 * its translated error. */
ORU_API oruResult oruGetLocalDateTime(const oruTimeVal* time, oruDateTime* dateTime);
ORU_API oruResult oruGetUTCDateTime(const oruTimeVal* time, oruDateTime* dateTime);
/** @} */

/** @{ */
/** a + b and a - b.  The microseconds are carried or borrowed once only:
 * values outside 0..999999 are not normalised any further.  A null operand
 * counts as {0, 0}. */
ORU_API oruTimeVal oruTimeValAdd(const oruTimeVal* a, const oruTimeVal* b);
ORU_API oruTimeVal oruTimeValSub(const oruTimeVal* a, const oruTimeVal* b);
/** @} */

/** -1, 0 or 1 as a is before, equal to or after b (seconds first, then
 * microseconds, both signed).  A null operand counts as {0, 0}. */
ORU_API int oruTimeValCmp(const oruTimeVal* a, const oruTimeVal* b);

/** Suspends the calling thread for at least the given number of
 * milliseconds.  Always ORU_OK. */
ORU_API oruResult oruSleep(uint32_t milliseconds);

#ifdef __cplusplus
}
#endif

#endif /* ORU_TIME_H */
