/* Loops over libdfp and GCC's decimal casts, for the text benchmarks. */
#ifndef BENCH_DECIMAL_STRINGS_PEER_H
#define BENCH_DECIMAL_STRINGS_PEER_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

void peer_strtod64(const char* const* s, uint64_t* r, size_t n);
void peer_strtod128(const char* const* s, uint64_t* r, size_t n);
int peer_printf_ready(void);
size_t peer_printf64(const uint64_t* x, char* buf, size_t size, size_t n);
void peer_double_to_d64(const double* x, uint64_t* r, size_t n);
void peer_d64_to_double(const uint64_t* x, double* r, size_t n);

#ifdef __cplusplus
}
#endif

#endif
