/* GCC's decimal arithmetic behind plain functions, for C++ callers. */
#ifndef GCC_DECIMAL_PEER_H
#define GCC_DECIMAL_PEER_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

uint64_t gcc_dec64(int op, uint64_t x, uint64_t y);
void gcc_dec128(int op, const uint64_t x[2], const uint64_t y[2], uint64_t out[2]);

#ifdef __cplusplus
}
#endif

#endif
