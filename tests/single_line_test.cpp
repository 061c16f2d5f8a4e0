// Brightness and contrast take a line in single precision where it stores the formula's bytes for every
// channel value. Both ways give the same pixels, so only here can be seen that either is taken, and that a
// wrong line is not.
#include "operations/single_line.h"

#include "tests/support/pictures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{

using qvr::brightnessContrast::Clamped;
using qvr::brightnessContrast::findLine;
using qvr::brightnessContrast::LowBytes;
using qvr::brightnessContrast::SingleLine;
using qvr::brightnessContrast::storesSame;

auto contrast(double amount)
{
    return [factor = amount + 1.0](double channel) { return (channel - 127.0) * factor + 127.0; };
}

auto custom(double scale, double offset)
{
    return [=](double channel) { return channel * scale + offset; };
}

/// What a value becomes when it is stored, without the plug-in's own conversions.
int clampedByte(double value)
{
    return value >= 256.0 && value < 2147483648.0 ? 255
           : value >= 0.0 && value < 256.0        ? static_cast<int>(value)
                                                  : 0;
}

template <class Formula>
int valuesThatDiffer(const SingleLine& line, const Formula& formula)
{
    int count = 0;
    for (int channel = 0; channel < 256; ++channel)
    {
        const float product = static_cast<float>(channel) * line.scale;
        const float value = product + line.offset;
        count += clampedByte(static_cast<double>(value)) != clampedByte(formula(channel)) ? 1 : 0;
    }
    return count;
}

TEST(SingleLine, IsFoundForNearlyAllArguments)
{
    Random random{7};
    constexpr int tries = 4000;
    int found = 0;
    for (int i = 0; i < tries; ++i)
    {
        const double amount = i % 2 == 0 ? i / 1000.0 - 2.0 : random.between(-2000000, 2000000) / 1e6;
        SingleLine line;
        if (!findLine<Clamped>(contrast(amount), line))
            continue;
        ++found;
        ASSERT_EQ(valuesThatDiffer(line, contrast(amount)), 0) << "contrast " << amount;
    }
    EXPECT_GT(found, tries * 95 / 100);
    EXPECT_LT(found, tries);
}

TEST(SingleLine, IsNotFoundWhereNoneIsRight)
{
    SingleLine line;
    EXPECT_TRUE(findLine<Clamped>(contrast(0.3), line));
    EXPECT_FALSE(findLine<Clamped>(custom(1.0, 2147483647.0), line));
    EXPECT_FALSE(findLine<Clamped>(custom(std::numeric_limits<double>::infinity(), 0.0), line));
    EXPECT_FALSE(findLine<Clamped>(custom(std::nan(""), 0.0), line));
    EXPECT_FALSE(findLine<LowBytes>(custom(1.0, 16777216.0 * 16), line))
        << "single precision has no such low bits";
}

TEST(SingleLine, IsRefusedWhenOneValueDiffers)
{
    const SingleLine identity{1.0F, 0.0F};
    EXPECT_TRUE(storesSame<Clamped>(identity, custom(1.0, 0.0)));
    for (int odd = 0; odd < 256; ++odd)
        EXPECT_FALSE(storesSame<Clamped>(identity, [odd](double channel) {
            return channel == odd ? (odd + 1) % 256 : channel;
        })) << odd;
}

TEST(SingleLine, IsRefusedExactlyWhereItIsWrong)
{
    // No round numbers, so that the values come to their integers one by one.
    for (const double amount : {0.31734, -0.71734})
    {
        const auto formula = contrast(amount);
        SingleLine right;
        ASSERT_TRUE(findLine<Clamped>(formula, right));
        for (int step = -4000; step <= 4000; ++step)
        {
            const SingleLine line{right.scale, right.offset + static_cast<float>(step) / 4096.0F};
            const int wrong = valuesThatDiffer(line, formula);
            EXPECT_EQ(storesSame<Clamped>(line, formula), wrong == 0)
                << step << ": " << wrong << " values differ";
        }
    }
}

TEST(SingleLine, ComparesLowBytesWhereTheyAreStored)
{
    // Beyond 255 both are white when clamped, and differ in what they store otherwise.
    const SingleLine line{0.0F, 300.0F};
    EXPECT_TRUE(storesSame<Clamped>(line, custom(0.0, 301.0)));
    EXPECT_FALSE(storesSame<LowBytes>(line, custom(0.0, 301.0)));
    EXPECT_TRUE(storesSame<LowBytes>(line, custom(0.0, 44.0)));
}

} // namespace
