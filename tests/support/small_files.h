/// \file
/// Files of a few hundred bytes that are whole plug-ins to their loaders, to be damaged.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

/// Bytes in the order in which they are put.
class Bytes
{
public:
    template <class Number>
    Bytes& put(Number number)
    {
        const auto* begin = reinterpret_cast<const char*>(&number);
        content.append(begin, begin + sizeof number);
        return *this;
    }
    Bytes& text(std::string_view value)
    {
        content += value;
        return *this;
    }
    Bytes& zeros(std::size_t count)
    {
        content.append(count, '\0');
        return *this;
    }
    Bytes& words(std::initializer_list<std::uint32_t> values)
    {
        for (const std::uint32_t value : values)
            put(value);
        return *this;
    }
    Bytes& bytes(std::initializer_list<int> values)
    {
        for (const int value : values)
            put(static_cast<std::uint8_t>(value));
        return *this;
    }
    /// Zeros up to a place.
    Bytes& fillTo(std::size_t size)
    {
        return zeros(size - content.size());
    }
    /// Changes the word at a place.
    Bytes& setWord(std::size_t at, std::uint32_t value)
    {
        content.replace(at, sizeof value, reinterpret_cast<const char*>(&value), sizeof value);
        return *this;
    }

    std::string content;
};

/// Where things lie in `smallBundle`.
namespace smallBundlePlaces
{
inline constexpr std::uint32_t protection = 28 + 44;            ///< word: what its segment may be used for
inline constexpr std::uint32_t initialisersSize = 28 + 56 + 36; ///< word: the bytes of its initialisers
inline constexpr std::uint32_t rebase = 28 + 124 + 24 + 48;     ///< 8 bytes of instructions
inline constexpr std::uint32_t bind = rebase + 8;               ///< 24 bytes of instructions
inline constexpr std::uint32_t exports = bind + 24;             ///< 32 bytes
inline constexpr std::uint32_t symbols = exports + 32;          ///< two symbols
inline constexpr std::uint32_t texts = symbols + 24;
inline constexpr std::uint32_t end = texts + 40;
inline constexpr std::uint32_t variable = 0x210;            ///< address of "qvrLaneLimit"
inline constexpr std::uint32_t symbolCount = 28 + 124 + 12; ///< word: the number of symbols
} // namespace smallBundlePlaces

/// A Mach-O bundle with one segment, one import, two words to rebase, an initialiser, an exported entry point
/// and a variable "qvrLaneLimit". None of its code can run.
Bytes smallBundle();

/// An ELF shared object with two segments and the sections that the host reads, with the variable too.
Bytes smallSharedObject();
