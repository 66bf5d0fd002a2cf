/**
 * @file
 * oru/hash.h - checksums, hashes, DES and random numbers.
 *
 * None of these functions keeps state of its own: every call works only on
 * its arguments, so all of them may be called from any thread.
 */
#ifndef ORU_HASH_H
#define ORU_HASH_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * CRC checksums.  Each call of oruComputeCRC or oruComputeCRC64 checksums
 * one whole buffer, starting from the model's initial value; oruUpdateCRC and
 * oruUpdateCRC64 (below) continue an earlier result.
 */

/** @{ */
/** Model numbers of oruComputeCRC. */
#define ORU_CRC16_ARC 0u         /**< poly 0x8005, reflected, init 0      */
#define ORU_CRC16_CCITT_FALSE 1u /**< poly 0x1021, init 0xFFFF            */
#define ORU_CRC16_XMODEM 2u      /**< poly 0x1021, init 0                 */
/** @} */
/** poly 0x04C11DB7, reflected: the CRC-32 of zip, PNG and Ethernet */
#define ORU_CRC32 3u

/** The CRC of length bytes at data under model type.  16-bit models fill
 * the low half of the result.  An unknown type gives 0; an empty buffer
 * (or a null data pointer) gives the model's value for no input. */
ORU_API uint32_t oruComputeCRC(uint32_t type, const void* data, size_t length);

/** CRC-64/XZ (ECMA-182 polynomial, reflected, all-ones init and final XOR).
 * An empty buffer, a null data pointer, or a length that would run past
 * the end of the address space gives 0. */
ORU_API uint64_t oruComputeCRC64(const void* data, size_t length);

/** A seeded 64-bit non-cryptographic hash of length bytes at data.  It is
 * this library's own variant of MurmurHash2-64 and gives other values than
 * MurmurHash64A.  A null data pointer hashes as the empty input. */
ORU_API uint64_t oruMurmurHash64(const void* data, size_t length, uint64_t seed);

/*
 * Incremental forms (additions; the one-shot functions above are unchanged).
 *
 * A CRC continues from an earlier result: given the CRC of a message A, the
 * update over the bytes of B returns the CRC of A followed by B, exactly the
 * one-shot result over the whole message.  So a stream is checksummed piece
 * by piece, starting from the model's value for no input:
 *
 *   uint32_t crc = oruComputeCRC(ORU_CRC32, NULL, 0);
 *   while (more input) crc = oruUpdateCRC(ORU_CRC32, crc, piece, size);
 *
 * The CRC-64 starts from 0 (oruComputeCRC64(NULL, 0)).
 */

/** The CRC under model type of the message whose CRC is crc, continued by
 * length bytes at data.  For the 16-bit models only the low half of crc is
 * used and the result fills the low half.  An unknown type gives 0; an
 * empty buffer (or a null data pointer) returns crc (its low half for the
 * 16-bit models). */
ORU_API uint32_t oruUpdateCRC(uint32_t type, uint32_t crc, const void* data, size_t length);

/** The CRC-64/XZ of the message whose CRC-64 is crc, continued by length
 * bytes at data.  An empty buffer, a null data pointer, or a length that
 * would run past the end of the address space returns crc unchanged. */
ORU_API uint64_t oruUpdateCRC64(uint64_t crc, const void* data, size_t length);

/** oruMurmurHash64 fed in pieces through a caller-owned context: Init with
 * the seed, Update with each piece in order, then Final gives the value
 * oruMurmurHash64 would give for all the pieces joined. */
typedef struct oruMurmurHash64Context {
  uint64_t hash;            /**< the running hash over the whole blocks */
  uint64_t length;          /**< bytes fed so far */
  unsigned char pending[8]; /**< the bytes of an unfinished block */
} oruMurmurHash64Context;

/** Starts a hash with seed.  ORU_E_INVALID_ARG for a null context, else
 * ORU_OK. */
ORU_API oruResult oruMurmurHash64Init(oruMurmurHash64Context* context, uint64_t seed);
/** Adds length bytes at data.  Does nothing for a null context or a null
 * data pointer. */
ORU_API void oruMurmurHash64Update(oruMurmurHash64Context* context, const void* data,
                                   size_t length);
/** The hash of everything fed since Init.  The context is left as it was, so
 * more input may follow.  A null context gives 0. */
ORU_API uint64_t oruMurmurHash64Final(const oruMurmurHash64Context* context);

/**
 * MD5 (RFC 1321), fed incrementally through a caller-owned context.
 */
typedef struct oruMD5Context {
  uint32_t state[4];        /**< A, B, C, D */
  uint32_t count[2];        /**< message length in bits, low word first */
  unsigned char buffer[64]; /**< input not yet transformed */
} oruMD5Context;

/** Starts a digest.  ORU_E_INVALID_ARG for a null context, else ORU_OK. */
ORU_API oruResult oruMD5Init(oruMD5Context* context);
/** Adds length bytes at data.  Does nothing for a null context, or for a
 * null data pointer. */
ORU_API void oruMD5Update(oruMD5Context* context, const void* data, uint64_t length);
/** Writes the 16-byte digest and clears the whole context to zero: it must be
 * initialised again before reuse.  Note the order: digest first.  Does
 * nothing when either pointer is null. */
ORU_API void oruMD5Final(unsigned char digest[16], oruMD5Context* context);

/*
 * DES and triple DES (encrypt-decrypt-encrypt) on single 8-byte blocks.
 * Keys are 8 bytes each; the low bit of every key byte (the parity bit) is
 * ignored.  There are no modes of operation and no padding.  Null pointers
 * make these functions do nothing.
 */

/** The 16 round subkeys in round order, 8 bytes each; every byte holds one
 * 6-bit group of the 48-bit subkey, the group for S-box 1 first. */
typedef struct oruDESKeySchedule {
  unsigned char subkeys[128]; /**< 16 subkeys of 8 bytes */
} oruDESKeySchedule;

/** Computes the key schedule of one 8-byte key. */
ORU_API void oruDESKeySetup(const unsigned char key[8], oruDESKeySchedule* schedule);
/** keys holds three keys one after another (24 bytes). */
ORU_API void oruDESKeySetup3(const unsigned char keys[24], oruDESKeySchedule* schedule1,
                             oruDESKeySchedule* schedule2, oruDESKeySchedule* schedule3);
/** Transforms the block in place: decrypt 0 encrypts, anything else
 * decrypts. */
ORU_API void oruDESBlockCipherECB(const oruDESKeySchedule* schedule, unsigned char block[8],
                                  int decrypt);
/** Triple DES in place: encrypting computes E(k3, D(k2, E(k1, block))),
 * decrypting D(k1, E(k2, D(k3, block))). */
ORU_API void oruDESBlockCipherECB3(const oruDESKeySchedule* schedule1,
                                   const oruDESKeySchedule* schedule2,
                                   const oruDESKeySchedule* schedule3, unsigned char block[8],
                                   int decrypt);

/*
 * Pseudo-random numbers: the Park-Miller minimal standard generator
 * (16807 * s mod 2^31 - 1).  The caller owns the whole state, one 32-bit
 * word; a state of 0 starts from a fixed seed.  Repeatable, not for
 * cryptography.
 */

/** Advances *state and returns the new value, a number from 0 to 2^31 - 2.
 * It is 0 only for a state of 0x7FFFFFFF (2^31 - 1) or 0xFFFFFFFE, which
 * also leave the state 0, so that the next call starts from the fixed seed;
 * every other state gives 1 to 2^31 - 2.  A null state pointer gives 0. */
ORU_API uint32_t oruGetRandomNumber(uint32_t* state);

#ifdef __cplusplus
}
#endif

#endif /* ORU_HASH_H */
