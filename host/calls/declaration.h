#pragma once

#include "host/calls/scanner.h"
#include "host/names.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standin
{

/// The types that declarations name.
enum class Type
{
    Nothing, ///< a method without result
    Boolean,
    Integer,
    UInt32,
    Colour,
    Double,
    String,
    MemoryBlock,
    Picture
};

/// The name of a type in declarations; only `Type::Nothing` is never written.
constexpr std::string_view nameOf(Type type)
{
    switch (type)
    {
    case Type::Nothing:
        return "nothing";
    case Type::Boolean:
        return "boolean";
    case Type::Integer:
        return "integer";
    case Type::UInt32:
        return "UInt32";
    case Type::Colour:
        return "color";
    case Type::Double:
        return "double";
    case Type::String:
        return "string";
    case Type::MemoryBlock:
        return "memoryblock";
    case Type::Picture:
        return "picture";
    }
    return {};
}

struct Parameter
{
    std::string name;
    Type type = Type::Integer;
    bool byref = false;
    std::optional<Literal> defaultValue;
};

/// One method declaration, taken apart.
struct Declaration
{
    std::string name;
    std::vector<Parameter> parameters;
    Type result = Type::Nothing;

    /// Number of arguments that have no default.
    std::size_t requiredCount() const;
    /// "(left as integer, top as integer = 0)".
    std::string parameterText() const;
};

/// Takes apart "Name(a as integer, byref b as memoryblock, c as color = &c88B5C4) as picture". Types, "as"
/// and "byref" are read in any case. Throws Error, naming the place, for a text that is not a declaration.
Declaration parseDeclaration(std::string_view text);

} // namespace standin
