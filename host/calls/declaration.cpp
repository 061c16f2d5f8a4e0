#include "host/calls/declaration.h"

#include "host/calls/scanner.h"
#include "host/error.h"
#include "host/values/text.h"

#include <algorithm>

namespace standin
{

namespace
{

Type readType(Scanner& scanner)
{
    for (const Type type : all<Type>)
        if (type != Type::Nothing && scanner.takeKeyword(nameOf(type)))
            return type;
    scanner.fail("a known type");
}

/// A literal as the declared type has it, where it can be told from the other types of number.
Literal readDefault(Scanner& scanner, Type type)
{
    const std::optional<Literal> literal = scanner.literal();
    if (!literal)
        scanner.fail("a value");
    const auto converted = [type, &scanner](auto number) -> Literal {
        // The language writes none of them with a point or an exponent.
        if constexpr (std::is_same_v<decltype(number), double>)
            if (type == Type::Integer || type == Type::Colour || type == Type::UInt32)
                scanner.fail("a whole number");
        switch (type)
        {
        case Type::Integer:
            return static_cast<std::int32_t>(number);
        case Type::Colour:
        case Type::UInt32:
            return static_cast<std::uint32_t>(number);
        case Type::Double:
            return static_cast<double>(number);
        case Type::Nothing:
        case Type::Boolean:
        case Type::String:
        case Type::MemoryBlock:
        case Type::Picture:
            break;
        }
        return number;
    };
    return std::visit(
        [&](auto value) -> Literal {
            if constexpr (std::is_same_v<decltype(value), std::nullptr_t> ||
                          std::is_same_v<decltype(value), bool>)
                return value;
            else
                return converted(value);
        },
        *literal);
}

Parameter readParameter(Scanner& scanner)
{
    const std::string wanted = "a parameter's name";
    Parameter parameter;
    parameter.byref = scanner.takeKeyword("byref");
    parameter.name = scanner.name(wanted);
    if (!scanner.takeKeyword("as"))
        scanner.fail("\"as\"");
    parameter.type = readType(scanner);
    if (scanner.take('='))
        parameter.defaultValue = readDefault(scanner, parameter.type);
    return parameter;
}

} // namespace

std::size_t Declaration::requiredCount() const
{
    return static_cast<std::size_t>(
        std::count_if(parameters.begin(), parameters.end(),
                      [](const Parameter& parameter) { return !parameter.defaultValue.has_value(); }));
}

std::string Declaration::parameterText() const
{
    std::string text = "(";
    for (const Parameter& parameter : parameters)
    {
        if (text.size() > 1)
            text += ", ";
        text +=
            (parameter.byref ? "byref " : "") + parameter.name + " as " + std::string(nameOf(parameter.type));
        if (parameter.defaultValue)
            text +=
                " = " + std::visit([](const auto& value) { return textOf(value); }, *parameter.defaultValue);
    }
    return text + ")";
}

Declaration parseDeclaration(std::string_view text)
{
    Scanner scanner(text);
    Declaration declaration;
    declaration.name = scanner.name("a name");
    if (scanner.take('('))
        scanner.list([&] { declaration.parameters.push_back(readParameter(scanner)); });
    if (scanner.takeKeyword("as"))
        declaration.result = readType(scanner);
    scanner.expectEnd();
    return declaration;
}

} // namespace standin
