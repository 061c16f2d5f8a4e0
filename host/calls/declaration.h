#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
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
    Color,
    Double,
    String,
    MemoryBlock,
    Picture
};

/// The name of a type as error texts show it, such as "integer".
std::string_view typeName(Type type);

/// A default value: nil, a boolean, an integer, a colour (unsigned) or a double.
using Default = std::variant<std::nullptr_t, bool, std::int32_t, std::uint32_t, double>;

struct Parameter
{
    std::string name;
    Type type = Type::Integer;
    bool byref = false;
    std::optional<Default> defaultValue;
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

/// Whether two names are the same in the host's language, which ignores case.
bool sameName(std::string_view a, std::string_view b);

} // namespace standin
