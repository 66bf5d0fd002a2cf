// oruMurmurHash64Init/Update/Final: oruMurmurHash64 over input that arrives
// in pieces.  Whole 8-byte blocks are mixed as they complete; the bytes of an
// unfinished block wait in the context until more input or Final.
#include <cstring>

#include "hash/oru_hash_bytes.h"
#include "hash/oru_murmur_mix.h"
#include "oru/hash.h"

using namespace oru::hash;

extern "C" ORU_API oruResult oruMurmurHash64Init(oruMurmurHash64Context* context, uint64_t seed) {
  if (context == nullptr) return ORU_E_INVALID_ARG;
  std::memset(context, 0, sizeof *context);
  context->hash = seed;
  return ORU_OK;
}

extern "C" ORU_API void oruMurmurHash64Update(oruMurmurHash64Context* context, const void* data,
                                              size_t length) {
  if (context == nullptr || data == nullptr || length == 0) return;
  const auto* p = static_cast<const unsigned char*>(data);
  size_t held = static_cast<size_t>(context->length % 8);
  context->length += length;
  uint64_t h = context->hash;
  if (held != 0) {
    const size_t take = length < 8 - held ? length : 8 - held;
    std::memcpy(context->pending + held, p, take);
    p += take;
    length -= take;
    held += take;
    if (held < 8) return;
    h = (h * kMurmurM) ^ murmur_mix(load_le64(context->pending));
  }
  for (; length >= 8; p += 8, length -= 8) h = (h * kMurmurM) ^ murmur_mix(load_le64(p));
  std::memcpy(context->pending, p, length);
  context->hash = h;
}

extern "C" ORU_API uint64_t oruMurmurHash64Final(const oruMurmurHash64Context* context) {
  if (context == nullptr) return 0;
  const size_t held = static_cast<size_t>(context->length % 8);
  uint64_t tail = 0;
  for (size_t i = 0; i < held; ++i) tail |= static_cast<uint64_t>(context->pending[i]) << (8 * i);
  return murmur_finish(context->hash, tail, context->length);
}
