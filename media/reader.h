#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <span>
#include <string_view>

namespace media
{

using ByteView = std::span<const std::uint8_t>;

inline bool startsWith(ByteView bytes, std::string_view text)
{
    return bytes.size() >= text.size() &&
           std::equal(text.begin(), text.end(), bytes.begin(),
                      [](char c, std::uint8_t byte) { return static_cast<std::uint8_t>(c) == byte; });
}

/// Takes bytes and numbers from the front of a file. Behind its end there are zeros.
class Reader
{
public:
    Reader(ByteView bytes, std::endian numbers) : rest(bytes), order(numbers)
    {
    }

    bool atEnd() const
    {
        return rest.empty();
    }
    /// What has not been taken.
    ByteView remainder() const
    {
        return rest;
    }
    /// The next bytes, fewer at the end.
    ByteView take(std::size_t count)
    {
        const ByteView front = rest.first(std::min(count, rest.size()));
        rest = rest.subspan(front.size());
        return front;
    }
    template <class Number>
    Number number()
    {
        constexpr std::size_t bitsPerByte = 8;
        const ByteView bytes = take(sizeof(Number));
        std::uint32_t value = 0;
        for (std::size_t index = 0; index < bytes.size(); ++index)
        {
            const std::size_t place = order == std::endian::little ? index : sizeof(Number) - 1 - index;
            value |= std::uint32_t{bytes[index]} << (bitsPerByte * place);
        }
        return static_cast<Number>(value);
    }
    std::uint8_t byte()
    {
        return number<std::uint8_t>();
    }

private:
    ByteView rest;
    std::endian order;
};

} // namespace media
