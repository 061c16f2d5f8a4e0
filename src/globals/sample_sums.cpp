#include "globals/sample_sums.h"

#include "editor/arithmetic.h"
#include "editor/lanes.h"

namespace qvr::waveform
{

namespace
{

typedef uint8_t Bytes __attribute__((vector_size(16)));
typedef int16_t Halves __attribute__((vector_size(16)));
typedef uint32_t Sums __attribute__((vector_size(16)));

constexpr int32_t vectorBytes = 16;

/// What the processor adds up at once: all samples, and those of them that are 0 or greater with the others
/// counted as 0. Sums of 32 bits, which wrap alike in whatever order.
struct Totals
{
    Sums all{};
    Sums raised{};

    static uint32_t of(Sums sums)
    {
        return sums[0] + sums[1] + sums[2] + sums[3];
    }
};

// Each format as one type: `levelAt` gives a sample as a level of which `zero` stands for 0, `add` adds up
// the levels of a vector.

/// Bytes whose sign bit is flipped by `Flip` to make them unsigned levels.
template <uint8_t Flip>
struct ByteSamples
{
    static constexpr int32_t size = 1;
    static constexpr int32_t zero = 128;

    static int32_t levelAt(const uint8_t* sample)
    {
        return *sample ^ Flip;
    }
    static void add(const uint8_t* samples, Totals& totals)
    {
        const Bytes levels = loadFrom<Bytes>(samples) ^ Flip;
        totals.all += sumOfBytes(levels);
        totals.raised += sumOfBytes(__builtin_elementwise_max(levels, Bytes{} + static_cast<uint8_t>(zero)));
    }

private:
    static Sums sumOfBytes(Bytes levels)
    {
        typedef char Chars __attribute__((vector_size(16)));
        return reinterpret_cast<Sums>(__builtin_ia32_psadbw128(reinterpret_cast<Chars>(levels), Chars{}));
    }
};

/// Words of two bytes whose sign bit is flipped by `Flip` to make them signed levels.
template <uint16_t Flip>
struct HalfSamples
{
    static constexpr int32_t size = 2;
    static constexpr int32_t zero = 0;

    static int32_t levelAt(const uint8_t* sample)
    {
        return static_cast<int16_t>(loadFrom<uint16_t>(sample) ^ Flip);
    }
    static void add(const uint8_t* samples, Totals& totals)
    {
        const Halves levels = loadFrom<Halves>(samples) ^ static_cast<int16_t>(Flip);
        totals.all += sumOfHalves(levels);
        totals.raised += sumOfHalves(__builtin_elementwise_max(levels, Halves{}));
    }

private:
    static Sums sumOfHalves(Halves levels)
    {
        return reinterpret_cast<Sums>(__builtin_ia32_pmaddwd128(levels, Halves{} + static_cast<int16_t>(1)));
    }
};

template <class Samples>
SampleSums sum(const uint8_t* samples, int32_t first, int32_t end)
{
    constexpr int32_t together = vectorBytes / Samples::size;
    constexpr int32_t unrolled = 2;

    const uint8_t* sample = samples + static_cast<ptrdiff_t>(first) * Samples::size;
    int32_t left = end - first;
    Totals totals[unrolled];
    for (; left >= unrolled * together; left -= unrolled * together, sample += unrolled * vectorBytes)
        for (int32_t i = 0; i < unrolled; ++i)
            Samples::add(sample + i * vectorBytes, totals[i]);
    uint32_t all = Totals::of(totals[0].all + totals[1].all);
    uint32_t raised = Totals::of(totals[0].raised + totals[1].raised);
    for (; left > 0; --left, sample += Samples::size)
    {
        const int32_t level = Samples::levelAt(sample);
        all += static_cast<uint32_t>(level);
        raised += static_cast<uint32_t>(maximum(level, Samples::zero));
    }
    const uint32_t zeros = static_cast<uint32_t>(end - first) * static_cast<uint32_t>(Samples::zero);
    return {static_cast<int32_t>(raised - zeros), static_cast<int32_t>(all - raised)};
}

} // namespace

SampleSums sumSamples(SampleFormat format, const uint8_t* samples, int32_t first, int32_t end)
{
    switch (format)
    {
    case SampleFormat::Signed8:
        return sum<ByteSamples<0x80>>(samples, first, end);
    case SampleFormat::Unsigned8:
        return sum<ByteSamples<0>>(samples, first, end);
    case SampleFormat::Signed16:
        return sum<HalfSamples<0>>(samples, first, end);
    case SampleFormat::Unsigned16:
        return sum<HalfSamples<0x8000>>(samples, first, end);
    }
    return {};
}

} // namespace qvr::waveform
