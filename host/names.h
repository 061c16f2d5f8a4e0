/// \file
/// Enumerations whose values have names. Each has a `nameOf(value)` beside it, a switch that the compiler
/// holds to be complete; lists of all values and look-ups by name follow from it.
#pragma once

#include "host/error.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace standin
{

/// Whether two names are the same in the host's language, which ignores case.
bool sameName(std::string_view a, std::string_view b);

/// With small letters in the place of capitals, those of ASCII.
std::string lowerCase(std::string_view text);

/// How many values an enumeration has: they count from 0, and what is no value has no name.
template <class Enum>
consteval std::size_t valueCount()
{
    std::size_t count = 0;
    while (!nameOf(static_cast<Enum>(count)).empty())
        ++count;
    return count;
}

/// All values of an enumeration, in their order.
template <class Enum>
constexpr auto all = [] {
    std::array<Enum, valueCount<Enum>()> values{};
    for (std::size_t index = 0; index < values.size(); ++index)
        values[index] = static_cast<Enum>(index);
    return values;
}();

/// The names of all values, in their order.
template <class Enum>
std::vector<std::string> allNames()
{
    std::vector<std::string> names;
    for (const Enum value : all<Enum>)
        names.emplace_back(nameOf(value));
    return names;
}

/// "mac or linux", "red, green or blue".
std::string listed(const std::vector<std::string>& names);

/// Those of the known names that may be meant by another one, the most likely first: a few letters are wrong,
/// or it is a part of them.
std::vector<std::string> namesLike(std::string_view name, const std::vector<std::string>& known);
/// "; did you mean InvertQVR or InvertGrayQVR?", or nothing.
std::string suggestionFor(std::string_view name, const std::vector<std::string>& known);

/// The value of a name, in any case. Throws Error, naming all, when there is none.
template <class Enum>
Enum valueNamed(std::string_view name)
{
    for (const Enum value : all<Enum>)
        if (sameName(nameOf(value), name))
            return value;
    throw Error("\"" + std::string(name) + "\" is none of " + listed(allNames<Enum>()));
}

} // namespace standin
