#include "globals/sample_sums.h"

#include "editor/arithmetic.h"
#include "editor/lanes.h"

#include <limits.h>

namespace qvr::waveform
{

namespace
{

typedef uint8_t Bytes __attribute__((vector_size(16)));
typedef int16_t Halves __attribute__((vector_size(16)));
typedef uint32_t Sums __attribute__((vector_size(16)));
/// What the sum of absolute differences gives: two sums of eight bytes.
typedef long long Pairs __attribute__((vector_size(16)));

constexpr int32_t vectorBytes = 16;

template <class Vector>
inline Vector loadVector(const uint8_t* address)
{
    Vector vector;
    __builtin_memcpy(&vector, address, sizeof vector);
    return vector;
}

uint32_t total(Sums sums)
{
    return sums[0] + sums[1] + sums[2] + sums[3];
}

uint8_t byteAt(const uint8_t* samples)
{
    return *samples;
}

uint16_t halfAt(const uint8_t* samples)
{
    uint16_t half = 0;
    __builtin_memcpy(&half, samples, sizeof half);
    return half;
}

// Each format as one type: `valueAt` is the truth, `add` the same for a vector, in unsigned sums that wrap
// alike.

/// Bytes with their sign bit flipped by `flip`, so that they are signed.
template <uint8_t Flip>
struct ByteSamples
{
    static constexpr int32_t size = 1;

    static int32_t valueAt(const uint8_t* sample)
    {
        return static_cast<int8_t>(byteAt(sample) ^ Flip);
    }
    static void add(const uint8_t* samples, Sums& positive, Sums& negative)
    {
        const Bytes values = loadVector<Bytes>(samples) ^ Flip;
        const auto isNegative = reinterpret_cast<Bytes>(values > SCHAR_MAX);
        positive += sumOfBytes(values & ~isNegative);
        // A negative byte counts as its distance from 0, to be taken away.
        negative -= sumOfBytes((Bytes{} - values) & isNegative);
    }

private:
    static Sums sumOfBytes(Bytes values)
    {
        typedef char Chars __attribute__((vector_size(16)));
        return reinterpret_cast<Sums>(
            static_cast<Pairs>(__builtin_ia32_psadbw128(reinterpret_cast<Chars>(values), Chars{})));
    }
};

/// The same for words of two bytes.
template <uint16_t Flip>
struct HalfSamples
{
    static constexpr int32_t size = 2;

    static int32_t valueAt(const uint8_t* sample)
    {
        return static_cast<int16_t>(halfAt(sample) ^ Flip);
    }
    static void add(const uint8_t* samples, Sums& positive, Sums& negative)
    {
        const Halves values = loadVector<Halves>(samples) ^ static_cast<int16_t>(Flip);
        const Halves ones = Halves{} + static_cast<int16_t>(1);
        positive += reinterpret_cast<Sums>(__builtin_ia32_pmaddwd128(values & ~(values < 0), ones));
        negative += reinterpret_cast<Sums>(__builtin_ia32_pmaddwd128(values & (values < 0), ones));
    }
};

template <class Samples>
SampleSums sum(const uint8_t* samples, int32_t first, int32_t end)
{
    constexpr int32_t together = vectorBytes / Samples::size;
    constexpr int32_t unrolled = 4;

    const uint8_t* sample = samples + static_cast<ptrdiff_t>(first) * Samples::size;
    int32_t left = end - first;
    Sums positive[unrolled]{};
    Sums negative[unrolled]{};
    for (; left >= unrolled * together; left -= unrolled * together, sample += unrolled * vectorBytes)
        for (int32_t i = 0; i < unrolled; ++i)
            Samples::add(sample + i * vectorBytes, positive[i], negative[i]);
    uint32_t positiveSum = total(positive[0] + positive[1] + positive[2] + positive[3]);
    uint32_t negativeSum = total(negative[0] + negative[1] + negative[2] + negative[3]);
    for (; left > 0; --left, sample += Samples::size)
    {
        const int32_t value = Samples::valueAt(sample);
        (value < 0 ? negativeSum : positiveSum) += static_cast<uint32_t>(value);
    }
    return {static_cast<int32_t>(positiveSum), static_cast<int32_t>(negativeSum)};
}

} // namespace

SampleSums sumSamples(SampleFormat format, const uint8_t* samples, int32_t first, int32_t end)
{
    switch (format)
    {
    case SampleFormat::Signed8:
        return sum<ByteSamples<0>>(samples, first, end);
    case SampleFormat::Unsigned8:
        return sum<ByteSamples<0x80>>(samples, first, end);
    case SampleFormat::Signed16:
        return sum<HalfSamples<0>>(samples, first, end);
    case SampleFormat::Unsigned16:
        return sum<HalfSamples<0x8000>>(samples, first, end);
    }
    return {};
}

} // namespace qvr::waveform
