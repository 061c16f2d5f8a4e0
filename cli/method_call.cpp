#include "cli/method_call.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace cli
{

using standin::Error;
using standin::Type;
using standin::Value;

namespace
{

bool isHandle(Type type)
{
    return type == Type::Picture || type == Type::MemoryBlock || type == Type::String;
}

/// Whether a literal can stand where a type is declared.
struct FitsType
{
    Type type;

    bool operator()(std::nullptr_t) const
    {
        return isHandle(type);
    }
    bool operator()(bool) const
    {
        return type == Type::Boolean;
    }
    bool operator()(std::int32_t) const
    {
        return type == Type::Integer || type == Type::UInt32 || type == Type::Colour || type == Type::Double;
    }
    bool operator()(std::uint32_t) const
    {
        return (*this)(std::int32_t{});
    }
    bool operator()(double) const
    {
        return type == Type::Double;
    }
    bool operator()(const std::string&) const
    {
        return type == Type::String;
    }
    bool operator()(const FileName&) const
    {
        return isHandle(type);
    }
    bool operator()(const VariableName&) const
    {
        return false;
    }
};

bool fits(const Literal& literal, Type type)
{
    return std::visit(FitsType{type}, literal);
}

bool fits(const CallText& text, const standin::Declaration& declaration)
{
    const auto& parameters = declaration.parameters;
    return text.arguments.size() >= declaration.requiredCount() &&
           text.arguments.size() <= parameters.size() &&
           std::equal(text.arguments.begin(), text.arguments.end(), parameters.begin(),
                      [](const Literal& literal, const standin::Parameter& parameter) {
                          return fits(literal, parameter.type) ||
                                 (parameter.byref && std::holds_alternative<VariableName>(literal));
                      });
}

const standin::RegisteredMethod& choose(const std::vector<const standin::RegisteredMethod*>& overloads,
                                        const CallText& text)
{
    const auto found = std::find_if(overloads.begin(), overloads.end(),
                                    [&](const auto* method) { return fits(text, method->declaration); });
    if (found != overloads.end())
        return **found;
    std::string choices;
    for (const auto* method : overloads)
        choices += (choices.empty() ? "" : " or ") + method->declaration.parameterText();
    throw Error(overloads.front()->declaration.name + " takes " + choices);
}

/// What a variable holds that nothing was assigned to.
Value initialValue(Type type)
{
    switch (type)
    {
    case Type::Boolean:
        return false;
    case Type::Integer:
        return std::int32_t{0};
    case Type::UInt32:
    case Type::Colour:
        return std::uint32_t{0};
    case Type::Double:
        return 0.0;
    default:
        return nullptr;
    }
}

Value checked(Value result)
{
    if (const auto& raised = result.exception())
        throw Error(raised->className + (raised->message.empty() ? "" : ": " + raised->message));
    return result;
}

std::string numberText(double number)
{
    constexpr std::size_t longestDouble = 32;
    std::array<char, longestDouble> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

} // namespace

MethodCall::MethodCall(const std::vector<const standin::RegisteredMethod*>& overloads, const CallText& text,
                       const FileReader& read)
    : chosen(&choose(overloads, text))
{
    const standin::Declaration& declaration = chosen->declaration;
    for (std::size_t index = 0; index < text.arguments.size(); ++index)
    {
        const Literal& literal = text.arguments[index];
        const standin::Parameter& parameter = declaration.parameters[index];
        if (!parameter.byref)
        {
            arguments.push_back(valueOf(literal, parameter.type, read));
            continue;
        }
        const auto* name = std::get_if<VariableName>(&literal);
        Variable& variable = byrefs.emplace_back(
            name != nullptr ? Variable{name->name, initialValue(parameter.type)}
                            : Variable{parameter.name, valueOf(literal, parameter.type, read)});
        arguments.emplace_back(standin::byref(variable.value));
    }
    if (!text.assigned)
        return;
    if (chosen->setter == nullptr)
        throw Error(declaration.name + " cannot be assigned to");
    assigned = valueOf(*text.assigned, declaration.result, read);
}

Value MethodCall::onPicture(standin::Host& host, const standin::Picture& receiver) const
{
    const std::string& name = chosen->declaration.name;
    return checked(assigned ? host.assign(receiver, name, arguments, *assigned)
                            : host.call(receiver, name, arguments));
}

Value MethodCall::onInstance(standin::Instance& instance) const
{
    const std::string& name = chosen->declaration.name;
    return checked(assigned ? instance.assign(name, arguments, *assigned) : instance.call(name, arguments));
}

Value MethodCall::global(standin::Host& host) const
{
    if (assigned)
        throw Error(chosen->declaration.name + " cannot be assigned to");
    return checked(host.callGlobal(chosen->declaration.name, arguments));
}

Value valueOf(const Literal& literal, Type type, const FileReader& read)
{
    if (!fits(literal, type))
    {
        const auto* variable = std::get_if<VariableName>(&literal);
        throw Error(variable != nullptr ? "\"" + variable->name + "\" is no value"
                                        : "a value of type " + std::string(nameOf(type)) + " is needed");
    }
    return std::visit(
        [&](const auto& content) -> Value {
            using Content = std::decay_t<decltype(content)>;
            if constexpr (std::is_same_v<Content, FileName>)
                return read(content.name, type);
            else if constexpr (std::is_same_v<Content, VariableName>)
                return nullptr;
            else
                return content;
        },
        literal);
}

void assignTo(standin::Instance& instance, const CallText& text, const FileReader& read)
{
    const standin::RegisteredClass& definition = instance.definition();
    if (!text.assigned)
        throw Error("\"" + text.name + "\" needs a value: " + text.name + "=VALUE");
    if (const auto methods = standin::methodsNamed(definition.methods, text.name); !methods.empty())
    {
        MethodCall(methods, text, read).onInstance(instance);
        return;
    }
    const auto property =
        std::find_if(definition.properties.begin(), definition.properties.end(),
                     [&](const auto& candidate) { return standin::sameName(candidate.name, text.name); });
    if (property == definition.properties.end())
        throw Error(definition.name + " has no property " + text.name);
    if (!text.arguments.empty())
        throw Error(property->name + " takes no arguments");
    const Type type = standin::parseDeclaration(property->name + " as " + property->type).result;
    instance.set(property->name, valueOf(*text.assigned, type, read));
}

std::string valueText(const Value& value)
{
    const auto* number = std::get_if<double>(&value.held());
    return number != nullptr ? numberText(*number) : value.describe();
}

} // namespace cli
