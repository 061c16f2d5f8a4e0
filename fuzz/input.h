#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace fuzz
{

/// Decisions out of a fuzzer's bytes, read from the front: any bytes are an input, and a change of one byte
/// changes one decision. Behind the end there are zeros.
class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size) : rest(data, size)
    {
    }

    bool atEnd() const
    {
        return rest.empty();
    }

    /// The bits of a number.
    template <class Number>
    Number bits()
    {
        Number number{};
        const std::span<const std::uint8_t> front = bytes(sizeof number);
        std::copy(front.begin(), front.end(), reinterpret_cast<std::uint8_t*>(&number));
        return number;
    }
    std::uint8_t byte()
    {
        return bits<std::uint8_t>();
    }
    bool flag()
    {
        return (byte() & 1) != 0;
    }
    /// 0 to `count` - 1; for counts up to 256.
    std::size_t below(std::size_t count)
    {
        return byte() % count;
    }
    /// Both ends included; not more than 256 values.
    int between(int lowest, int highest)
    {
        return lowest + static_cast<int>(below(static_cast<std::size_t>(highest - lowest) + 1));
    }
    template <class Items>
    const auto& oneOf(const Items& items)
    {
        return std::data(items)[below(std::size(items))];
    }

    /// The next bytes, fewer at the end.
    std::span<const std::uint8_t> bytes(std::size_t count)
    {
        const std::span<const std::uint8_t> front = rest.first(std::min(count, rest.size()));
        rest = rest.subspan(front.size());
        return front;
    }
    std::string text(std::size_t count)
    {
        const std::span<const std::uint8_t> front = bytes(count);
        return {front.begin(), front.end()};
    }
    /// All that is left.
    std::span<const std::uint8_t> remainder()
    {
        return bytes(rest.size());
    }

    /// An integer that likes the interesting places: around 0 and `size`, and the ends of the range.
    std::int32_t coordinate(int size);
    /// A double that likes the interesting places; now and then any bits at all.
    double real();

private:
    std::span<const std::uint8_t> rest;
};

} // namespace fuzz
