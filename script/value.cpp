#include "script/value.h"

#include "host/names.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace script
{

using standin::Error;
using standin::Type;

namespace
{

constexpr std::array<std::pair<Kind, std::string_view>, 10> plainTypes{{{Kind::Integer, "Integer"},
                                                                        {Kind::UInt32, "UInt32"},
                                                                        {Kind::Double, "Double"},
                                                                        {Kind::Single, "Single"},
                                                                        {Kind::Boolean, "Boolean"},
                                                                        {Kind::String, "String"},
                                                                        {Kind::Colour, "Color"},
                                                                        {Kind::Picture, "Picture"},
                                                                        {Kind::MemoryBlock, "MemoryBlock"},
                                                                        {Kind::FolderItem, "FolderItem"}}};

bool isNumber(const Value& value)
{
    return std::holds_alternative<std::int32_t>(value) || std::holds_alternative<std::uint32_t>(value) ||
           std::holds_alternative<double>(value);
}

bool isObject(const Value& value)
{
    return std::holds_alternative<std::nullptr_t>(value) || std::holds_alternative<standin::Picture>(value) ||
           std::holds_alternative<standin::MemoryBlock>(value) ||
           std::holds_alternative<standin::Instance>(value);
}

const standin::Reference* referenceOf(const Value& value)
{
    return std::visit(
        [](const auto& content) -> const standin::Reference* {
            if constexpr (std::is_base_of_v<standin::Reference, std::decay_t<decltype(content)>>)
                return &content;
            else
                return nullptr;
        },
        value);
}

bool sameObject(const Value& left, const Value& right)
{
    const standin::Reference* first = referenceOf(left);
    const standin::Reference* second = referenceOf(right);
    return first == nullptr || second == nullptr ? first == second : *first == *second;
}

[[noreturn]] void refuse(const std::string& wanted, const Value& value)
{
    throw Error("expected " + wanted + ", got " + typeNameOf(value));
}

template <class Number>
Number wrapped(std::int64_t value)
{
    return static_cast<Number>(static_cast<std::uint64_t>(value));
}

std::uint32_t unsignedOf(const Value& value)
{
    if (const auto* number = std::get_if<double>(&value))
    {
        constexpr double limit = 9e18;
        return std::abs(*number) < limit ? wrapped<std::uint32_t>(static_cast<std::int64_t>(*number)) : 0;
    }
    if (const auto* number = std::get_if<std::uint32_t>(&value))
        return *number;
    return static_cast<std::uint32_t>(integerOf(value));
}

/// Signed arithmetic as 32-bit registers do it; sums and products of 32 bits fit into 64.
template <class Number>
Value wholeResult(Operator operation, std::int64_t left, std::int64_t right)
{
    switch (operation)
    {
    case Operator::Plus:
        return wrapped<Number>(left + right);
    case Operator::Minus:
        return wrapped<Number>(left - right);
    case Operator::Times:
        return wrapped<Number>(
            static_cast<std::int64_t>(static_cast<std::uint64_t>(left) * static_cast<std::uint64_t>(right)));
    case Operator::DivideWhole:
    case Operator::Mod:
        if (right == 0)
            throw Error("expected a divisor other than 0");
        return wrapped<Number>(operation == Operator::Mod ? left % right : left / right);
    case Operator::And:
        return wrapped<Number>(left & right);
    case Operator::Or:
        return wrapped<Number>(left | right);
    default:
        return wrapped<Number>(left ^ right);
    }
}

Value realResult(Operator operation, double left, double right)
{
    switch (operation)
    {
    case Operator::Plus:
        return left + right;
    case Operator::Minus:
        return left - right;
    case Operator::Times:
        return left * right;
    case Operator::Divide:
        return left / right;
    default:
        return std::pow(left, right);
    }
}

template <class Ordered>
bool compared(Operator operation, const Ordered& left, const Ordered& right)
{
    switch (operation)
    {
    case Operator::Equal:
        return left == right;
    case Operator::NotEqual:
        return left != right;
    case Operator::Less:
        return left < right;
    case Operator::LessOrEqual:
        return left <= right;
    case Operator::Greater:
        return left > right;
    default:
        return left >= right;
    }
}

std::string_view textOf(Operator operation)
{
    constexpr std::array<std::string_view, 18> texts{"Or", "Xor", "And", "=", "<>", "<",  "<=",  ">", ">=",
                                                     "Is", "+",   "-",   "*", "/",  "\\", "Mod", "^", "Not"};
    return texts[static_cast<std::size_t>(operation)];
}

[[noreturn]] void refuse(Operator operation, const Value& left, const Value& right)
{
    throw Error("expected other operands: \"" + std::string(textOf(operation)) + "\" does not take " +
                typeNameOf(left) + " and " + typeNameOf(right));
}

bool isComparison(Operator operation)
{
    return operation >= Operator::Equal && operation <= Operator::GreaterOrEqual;
}

Value ofNumbers(Operator operation, const Value& left, const Value& right)
{
    const bool anyReal = std::holds_alternative<double>(left) || std::holds_alternative<double>(right);
    if (isComparison(operation))
        return compared(operation, numberOf(left), numberOf(right));
    if (operation == Operator::Divide || operation == Operator::Power)
        return realResult(operation, numberOf(left), numberOf(right));
    const bool bitwise =
        operation == Operator::And || operation == Operator::Or || operation == Operator::Xor;
    if (anyReal && bitwise)
        refuse(operation, left, right);
    if (anyReal && operation != Operator::DivideWhole && operation != Operator::Mod)
        return realResult(operation, numberOf(left), numberOf(right));
    if (std::holds_alternative<std::uint32_t>(left) && std::holds_alternative<std::uint32_t>(right))
        return wholeResult<std::uint32_t>(operation, unsignedOf(left), unsignedOf(right));
    return wholeResult<std::int32_t>(operation, integerOf(left), integerOf(right));
}

Value ofBooleans(Operator operation, bool left, bool right)
{
    switch (operation)
    {
    case Operator::And:
        return left && right;
    case Operator::Or:
        return left || right;
    case Operator::Equal:
        return left == right;
    default:
        return left != right;
    }
}

} // namespace

std::string nameOf(const VariableType& type)
{
    for (const auto& [kind, name] : plainTypes)
        if (kind == type.kind)
            return std::string(name);
    return type.className;
}

std::string typeNameOf(const Value& value)
{
    return std::visit(
        Overloaded{
            [](std::nullptr_t) -> std::string { return "Nil"; },
            [](bool) -> std::string { return "Boolean"; },
            [](std::int32_t) -> std::string { return "Integer"; },
            [](std::uint32_t) -> std::string { return "UInt32"; },
            [](double) -> std::string { return "Double"; },
            [](const Colour&) -> std::string { return "Color"; },
            [](const standin::String&) -> std::string { return "String"; },
            [](const standin::Picture&) -> std::string { return "Picture"; },
            [](const standin::MemoryBlock&) -> std::string { return "MemoryBlock"; },
            [](const standin::Instance& instance) -> std::string { return instance.definition().name; },
            [](const File&) -> std::string { return "FolderItem"; },
            [](const Surface&) -> std::string { return "RGBSurface"; },
            [](const FileName&) -> std::string { return "a file"; },
        },
        value);
}

VariableType typeNamed(const standin::Registered& registered, const std::string& name)
{
    for (const auto& [kind, typeName] : plainTypes)
        if (standin::sameName(typeName, name))
            return {kind, {}};
    if (standin::sameName(name, "Int32"))
        return {Kind::Integer, {}};
    if (const standin::RegisteredClass* definition = registered.findClass(name))
        return {Kind::Instance, definition->name};
    throw Error("expected a type, there is no " + name);
}

Value initialValue(const VariableType& type)
{
    switch (type.kind)
    {
    case Kind::Integer:
        return std::int32_t{0};
    case Kind::UInt32:
        return std::uint32_t{0};
    case Kind::Double:
    case Kind::Single:
        return 0.0;
    case Kind::Boolean:
        return false;
    case Kind::String:
        return standin::String();
    case Kind::Colour:
        return Colour();
    case Kind::Picture:
    case Kind::MemoryBlock:
    case Kind::FolderItem:
    case Kind::Instance:
        break;
    }
    return nullptr;
}

Value converted(const Value& value, const VariableType& type)
{
    const auto object = [&](bool fits) {
        if (!fits && !std::holds_alternative<std::nullptr_t>(value))
            refuse(nameOf(type), value);
        return value;
    };
    switch (type.kind)
    {
    case Kind::Integer:
        return integerOf(value);
    case Kind::UInt32:
        if (!isNumber(value))
            refuse("UInt32", value);
        return unsignedOf(value);
    case Kind::Double:
        return numberOf(value);
    case Kind::Single:
        return static_cast<double>(static_cast<float>(numberOf(value)));
    case Kind::Boolean:
        return booleanOf(value);
    case Kind::String:
        textOf(value);
        return value;
    case Kind::Colour:
        return colourOf(value);
    case Kind::Picture:
        return object(std::holds_alternative<standin::Picture>(value));
    case Kind::MemoryBlock:
        return object(std::holds_alternative<standin::MemoryBlock>(value));
    case Kind::FolderItem:
        return object(std::holds_alternative<File>(value));
    case Kind::Instance:
        break;
    }
    const auto* instance = std::get_if<standin::Instance>(&value);
    return object(instance != nullptr && instance->definition().name == type.className);
}

std::int32_t integerOf(const Value& value)
{
    if (const auto* number = std::get_if<std::int32_t>(&value))
        return *number;
    if (const auto* number = std::get_if<std::uint32_t>(&value))
        return static_cast<std::int32_t>(*number);
    const auto* number = std::get_if<double>(&value);
    if (number == nullptr)
        refuse("Integer", value);
    constexpr double below = -2147483649.0;
    constexpr double above = 2147483648.0;
    return *number > below && *number < above ? static_cast<std::int32_t>(*number)
                                              : std::numeric_limits<std::int32_t>::min();
}

double numberOf(const Value& value)
{
    if (const auto* number = std::get_if<std::int32_t>(&value))
        return *number;
    if (const auto* number = std::get_if<std::uint32_t>(&value))
        return *number;
    const auto* number = std::get_if<double>(&value);
    if (number == nullptr)
        refuse("a number", value);
    return *number;
}

bool booleanOf(const Value& value)
{
    const auto* content = std::get_if<bool>(&value);
    if (content == nullptr)
        refuse("Boolean", value);
    return *content;
}

const std::string& textOf(const Value& value)
{
    static const std::string empty;
    const auto* content = std::get_if<standin::String>(&value);
    if (content == nullptr)
        refuse("String", value);
    return content->isNil() ? empty : content->bytes();
}

Colour colourOf(const Value& value)
{
    const auto* content = std::get_if<Colour>(&value);
    if (content == nullptr)
        refuse("Color", value);
    return *content;
}

std::string shown(const Value& value)
{
    const auto formatted = [](const char* format, auto number) {
        constexpr std::size_t longest = 32;
        std::array<char, longest> text{};
        const int length = std::snprintf(text.data(), text.size(), format, number);
        return std::string(text.data(), static_cast<std::size_t>(length));
    };
    return std::visit(
        Overloaded{
            [](bool content) -> std::string { return content ? "True" : "False"; },
            [](std::int32_t content) { return std::to_string(content); },
            [](std::uint32_t content) { return std::to_string(content); },
            [&](double content) { return formatted("%.7g", content); },
            [&](const Colour& content) { return formatted("&c%06X", content.rgb); },
            [&](const standin::String&) { return textOf(value); },
            [&](const auto&) -> std::string { refuse("a number, a Boolean, a Color or a String", value); },
        },
        value);
}

Value applied(standin::Host& host, Operator operation, const Value& left, const Value& right)
{
    if (isNumber(left) && isNumber(right) && operation != Operator::Is)
        return ofNumbers(operation, left, right);
    const bool equality = operation == Operator::Equal || operation == Operator::NotEqual;
    if (std::holds_alternative<bool>(left) && std::holds_alternative<bool>(right))
        if (equality || operation == Operator::And || operation == Operator::Or || operation == Operator::Xor)
            return ofBooleans(operation, std::get<bool>(left), std::get<bool>(right));
    if (std::holds_alternative<standin::String>(left) && std::holds_alternative<standin::String>(right))
    {
        if (isComparison(operation))
            // Texts too are the same to the language whatever their case.
            return compared(operation, standin::lowerCase(textOf(left)), standin::lowerCase(textOf(right)));
        if (operation == Operator::Plus)
            return host.newString(textOf(left) + textOf(right));
    }
    if (std::holds_alternative<Colour>(left) && std::holds_alternative<Colour>(right) && equality)
        return (std::get<Colour>(left) == std::get<Colour>(right)) == (operation == Operator::Equal);
    if (isObject(left) && isObject(right) && (equality || operation == Operator::Is))
        return sameObject(left, right) != (operation == Operator::NotEqual);
    refuse(operation, left, right);
}

Value applied(Operator operation, const Value& operand)
{
    if (operation == Operator::Not)
    {
        if (const auto* number = std::get_if<std::int32_t>(&operand))
            return ~*number;
        if (const auto* number = std::get_if<std::uint32_t>(&operand))
            return ~*number;
        return !booleanOf(operand);
    }
    if (!isNumber(operand))
        refuse("a number", operand);
    if (operation == Operator::Plus)
        return operand;
    if (const auto* number = std::get_if<double>(&operand))
        return -*number;
    return wrapped<std::int32_t>(-std::int64_t{integerOf(operand)});
}

standin::Value toHost(const Value& value)
{
    return std::visit(Overloaded{
                          [](const Colour& content) { return standin::Value(content.rgb); },
                          [](const standin::Instance&) -> standin::Value {
                              throw Error("no method of the plug-in takes an instance");
                          },
                          [&](const File&) -> standin::Value { refuse("another value", value); },
                          [&](const Surface&) -> standin::Value { refuse("another value", value); },
                          [&](const FileName&) -> standin::Value { refuse("another value", value); },
                          [](const auto& content) { return standin::Value(content); },
                      },
                      value);
}

Value fromHost(const standin::Value& value, Type type)
{
    switch (type)
    {
    case Type::Boolean:
        return value.boolean();
    case Type::Integer:
        return value.integer();
    case Type::UInt32:
        return value.colour();
    case Type::Colour:
        return Colour{value.colour()};
    case Type::Double:
        return value.number();
    case Type::String:
        return value.string();
    case Type::MemoryBlock:
        if (!value.isNil())
            return value.memoryBlock();
        break;
    case Type::Picture:
        if (!value.isNil())
            return value.picture();
        break;
    case Type::Nothing:
        break;
    }
    return nullptr;
}

std::optional<Type> declaredType(Kind kind)
{
    switch (kind)
    {
    case Kind::Integer:
        return Type::Integer;
    case Kind::UInt32:
        return Type::UInt32;
    case Kind::Double:
        return Type::Double;
    case Kind::Boolean:
        return Type::Boolean;
    case Kind::String:
        return Type::String;
    case Kind::Colour:
        return Type::Colour;
    case Kind::Picture:
        return Type::Picture;
    case Kind::MemoryBlock:
        return Type::MemoryBlock;
    case Kind::Single:
    case Kind::FolderItem:
    case Kind::Instance:
        break;
    }
    return std::nullopt;
}

} // namespace script
