#include "system/c_library.h"

#include <emmintrin.h>
#include <stdint.h>

extern "C" {

void* malloc(size_t size);
void* calloc(size_t count, size_t size);
void free(void* block);
void* memcpy(void* destination, const void* source, size_t size);
void* memset(void* destination, int value, size_t size);
size_t strlen(const char* text);

} // extern "C"

namespace qvr::libc
{

// Neither static nor const: the optimiser would fold such a pointer back into the direct call it is there to
// avoid.
void* (*malloc)(size_t) = ::malloc;
void* (*calloc)(size_t, size_t) = ::calloc;
void (*free)(void*) = ::free;
void* (*memcpy)(void*, const void*, size_t) = ::memcpy;
void* (*memset)(void*, int, size_t) = ::memset;
size_t (*strlen)(const char*) = ::strlen;

} // namespace qvr::libc

// The compiler calls these of its own accord, and directly. A name can be defined or imported but not both,
// so in the bundle `libc::memcpy` and `libc::memset` are these too.
#ifdef __APPLE__

namespace qvr::blocks
{
namespace
{

constexpr size_t vectorSize = sizeof(__m128i);

__m128i load(const uint8_t* source)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(source));
}

void store(uint8_t* destination, __m128i value)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(destination), value);
}

/// Bytes from `address` up to the next multiple of the vector size: 1 to 16.
size_t distanceToAlignment(const uint8_t* address)
{
    return vectorSize - reinterpret_cast<uintptr_t>(address) % vectorSize;
}

} // namespace
} // namespace qvr::blocks

namespace blocks = qvr::blocks;

extern "C" {

// One unaligned vector at either end leaves a middle whose destination is aligned, which is where the
// processor's string instructions run at full speed.
void* memcpy(void* destination, const void* source, size_t size)
{
    auto* to = static_cast<uint8_t*>(destination);
    const auto* from = static_cast<const uint8_t*>(source);
    if (size < 2 * blocks::vectorSize)
    {
        asm volatile("rep movsb" : "+D"(to), "+S"(from), "+c"(size)::"memory");
        return destination;
    }
    const __m128i head = blocks::load(from);
    const __m128i tail = blocks::load(from + size - blocks::vectorSize);
    const size_t skipped = blocks::distanceToAlignment(to);
    uint8_t* middle = to + skipped;
    const uint8_t* middleSource = from + skipped;
    size_t words = (size - skipped) / 4;
    asm volatile("rep movsl" : "+D"(middle), "+S"(middleSource), "+c"(words)::"memory");
    blocks::store(to, head);
    blocks::store(to + size - blocks::vectorSize, tail);
    return destination;
}

void* memset(void* destination, int value, size_t size)
{
    auto* to = static_cast<uint8_t*>(destination);
    if (size < 2 * blocks::vectorSize)
    {
        asm volatile("rep stosb" : "+D"(to), "+c"(size) : "a"(value) : "memory");
        return destination;
    }
    const __m128i bytes = _mm_set1_epi8(static_cast<char>(value));
    const size_t skipped = blocks::distanceToAlignment(to);
    uint8_t* middle = to + skipped;
    size_t words = (size - skipped) / 4;
    asm volatile("rep stosl" : "+D"(middle), "+c"(words) : "a"(_mm_cvtsi128_si32(bytes)) : "memory");
    blocks::store(to, bytes);
    blocks::store(to + size - blocks::vectorSize, bytes);
    return destination;
}

void __bzero(void* destination, size_t size)
{
    memset(destination, 0, size);
}

} // extern "C"

#endif

extern "C" {

// Not among the imports of either artefact, yet the compiler may call it.
void* memmove(void* destination, const void* source, size_t size)
{
    auto* to = static_cast<uint8_t*>(destination);
    const auto* from = static_cast<const uint8_t*>(source);
    if (reinterpret_cast<uintptr_t>(to) - reinterpret_cast<uintptr_t>(from) >= size)
    {
        asm volatile("rep movsb" : "+D"(to), "+S"(from), "+c"(size)::"memory");
        return destination;
    }
    while (size > 0)
    {
        --size;
        to[size] = from[size];
    }
    return destination;
}

} // extern "C"
