/// \file
/// What a program's variables hold, and what becomes of values under its operators.
#pragma once

#include "host/calls/declaration.h"
#include "host/host.h"
#include "script/syntax.h"

#include <string>
#include <string_view>
#include <variant>

namespace script
{

/// A file, as the language's FolderItem stands for it.
struct File
{
    std::string name;
};

/// What `Picture.RGBSurface` gives.
struct Surface
{
    standin::Picture picture;
};

/// Objects that are nil are nullptr, whatever their type; an empty string may be no object of the host.
using Value =
    std::variant<std::nullptr_t, bool, std::int32_t, std::uint32_t, double, Colour, standin::String,
                 standin::Picture, standin::MemoryBlock, standin::Instance, File, Surface, FileName>;

/// One visitor of values out of functions for some types each.
template <class... Visitors>
struct Overloaded : Visitors...
{
    using Visitors::operator()...;
};
template <class... Visitors>
Overloaded(Visitors...) -> Overloaded<Visitors...>;

/// The types that variables can have.
enum class Kind
{
    Integer,
    UInt32,
    Double,
    Single,
    Boolean,
    String,
    Colour,
    Picture,
    MemoryBlock,
    FolderItem,
    Instance ///< of a class that the plug-in registered
};

struct VariableType
{
    Kind kind = Kind::Integer;
    std::string className; ///< of an Instance

    bool operator==(const VariableType&) const = default;
};

struct Variable
{
    VariableType type;
    Value value;
};

/// The name of a type as programs write it.
std::string nameOf(const VariableType& type);
/// The name of a value's type, for messages.
std::string typeNameOf(const Value& value);

/// The type of a name; throws Error when there is none.
VariableType typeNamed(const standin::Registered& registered, const std::string& name);

/// What a variable holds that nothing was assigned to.
Value initialValue(const VariableType& type);
/// A value as a variable of this type takes it; throws Error when it cannot.
Value converted(const Value& value, const VariableType& type);

/// Doubles lose what stands behind the point; those out of range become the smallest integer, as with the
/// processor's own instruction. Each of these throws Error for a value of another type.
std::int32_t integerOf(const Value& value);
double numberOf(const Value& value);
bool booleanOf(const Value& value);
/// The bytes of a string.
const std::string& textOf(const Value& value);
Colour colourOf(const Value& value);

/// What Str and Print make of a value.
std::string shown(const Value& value);

/// Strings are made by the host. Throws Error when the operator does not take these operands.
Value applied(standin::Host& host, Operator operation, const Value& left, const Value& right);
Value applied(Operator operation, const Value& operand);

/// The host's value, and the way back from what a call or a property of this type gave.
standin::Value toHost(const Value& value);
Value fromHost(const standin::Value& value, standin::Type type);
/// The type that the host's declarations call so; none of them declares the others.
std::optional<standin::Type> declaredType(Kind kind);

} // namespace script
