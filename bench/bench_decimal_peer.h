/* Loops over GCC's decimal types and libdfp, for the decimal benchmarks. */
#ifndef BENCH_DECIMAL_PEER_H
#define BENCH_DECIMAL_PEER_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

void peer_gcc64(int op, const uint64_t* x, const uint64_t* y, uint64_t* r, size_t n);
void peer_gcc128(int op, const uint64_t* x, const uint64_t* y, uint64_t* r, size_t n);
void peer_dfp64_fma(const uint64_t* x, const uint64_t* y, const uint64_t* z, uint64_t* r, size_t n);
void peer_dfp64_quantize(const uint64_t* x, const uint64_t* y, uint64_t* r, size_t n);
void peer_dfp128_fma(const uint64_t* x, const uint64_t* y, const uint64_t* z, uint64_t* r,
                     size_t n);
void peer_dfp128_quantize(const uint64_t* x, const uint64_t* y, uint64_t* r, size_t n);

#ifdef __cplusplus
}
#endif

#endif
