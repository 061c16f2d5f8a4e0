/// \file
/// Vectors of pixels: the same text of a formula serves four pixels at a time (SSE2) or eight (AVX2).
///
/// Formulas use the operators of the compiler's vector types only. Integer and IEEE double arithmetic give
/// the same bits in every lane of every width, so the choice cannot be observed.
#pragma once

#include <stdint.h>

/// Everything inside a vector loop must be inlined into it, so that it is compiled for the loop's instruction
/// set.
#define QVR_INLINE __attribute__((always_inline))

namespace qvr
{

/// `Count` pixels side by side; every member type has `Count` lanes.
template <int32_t Count>
struct Lanes
{
    static constexpr int32_t count = Count;
    typedef uint32_t Words __attribute__((vector_size(Count * 4)));
    /// Comparison results too: -1 where true, 0 where false.
    typedef int32_t Integers __attribute__((vector_size(Count * 4)));
    typedef float Floats __attribute__((vector_size(Count * 4)));
    typedef double Doubles __attribute__((vector_size(Count * 8)));
};

/// The lanes that a vector type belongs to.
template <class Vector>
using LanesOf = Lanes<sizeof(Vector) / sizeof(Vector{}[0])>;

/// A number or a vector from an address that need not be aligned, and back.
template <class Value>
QVR_INLINE inline Value loadFrom(const void* address)
{
    Value value;
    __builtin_memcpy(&value, address, sizeof value);
    return value;
}
template <class Value>
QVR_INLINE inline void storeAt(void* address, Value value)
{
    __builtin_memcpy(address, &value, sizeof value);
}

/// Stores around the cache, to an address that is aligned. The compiler is told so once more: vectors of the
/// Mac are aligned to 16 bytes by themselves, and wider ones would be stored in halves.
template <class Value>
QVR_INLINE inline void streamTo(void* address, Value value)
{
    __builtin_nontemporal_store(value, static_cast<Value*>(__builtin_assume_aligned(address, sizeof(Value))));
}

/// Integers as words, whose sums and products wrap, and back.
template <class Integers>
QVR_INLINE inline auto asWords(Integers integers)
{
    return reinterpret_cast<typename LanesOf<Integers>::Words>(integers);
}
template <class Words>
QVR_INLINE inline auto asIntegers(Words words)
{
    return reinterpret_cast<typename LanesOf<Words>::Integers>(words);
}

/// Every Intel Mac and every Linux host has SSE2.
using NarrowLanes = Lanes<4>;
/// Used where the processor and the system offer AVX2.
using WideLanes = Lanes<8>;

/// Function attribute of loops over `WideLanes`.
#define QVR_WIDE_TARGET __attribute__((target("avx2")))

/// Whether loops over `WideLanes` may run; asks the processor once.
bool wideLanesAvailable();

} // namespace qvr

/// The most lanes that may be used; tests lower it to 4 to force the narrow loops.
extern "C" int32_t qvrLaneLimit;
