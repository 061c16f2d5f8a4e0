#include "cli/method_call.h"

#include "host/calls/overloads.h"

#include <algorithm>

namespace cli
{

using standin::ArgumentForm;
using standin::Error;
using standin::Type;
using standin::Value;

namespace
{

ArgumentForm formOf(const Term& term)
{
    struct Visitor
    {
        ArgumentForm operator()(const standin::Literal& literal) const
        {
            return standin::formOf(literal);
        }
        ArgumentForm operator()(const std::string& text) const
        {
            return standin::formOf(Value(text));
        }
        ArgumentForm operator()(const FileName&) const
        {
            return standin::formOfObject();
        }
        ArgumentForm operator()(const VariableName&) const
        {
            return standin::formOfNewVariable();
        }
    };
    return std::visit(Visitor(), term);
}

/// A byref parameter takes values too, each in a variable of its own.
std::vector<ArgumentForm> formsOf(const std::vector<Term>& terms)
{
    std::vector<ArgumentForm> forms;
    for (const Term& term : terms)
    {
        forms.push_back(formOf(term));
        forms.back().byReference = true;
    }
    return forms;
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

} // namespace

MethodCall::MethodCall(const std::vector<const standin::RegisteredMethod*>& overloads, const CallText& text,
                       const FileReader& read)
    : chosen(&standin::chooseOverload(overloads, text.name, formsOf(text.arguments)))
{
    const standin::Declaration& declaration = chosen->declaration;
    for (std::size_t index = 0; index < text.arguments.size(); ++index)
    {
        const Term& term = text.arguments[index];
        const standin::Parameter& parameter = declaration.parameters[index];
        if (!parameter.byref)
        {
            arguments.push_back(valueOf(term, parameter.type, read));
            continue;
        }
        const auto* name = std::get_if<VariableName>(&term);
        Variable& variable = byrefs.emplace_back(
            name != nullptr ? Variable{name->name, initialValue(parameter.type)}
                            : Variable{parameter.name, valueOf(term, parameter.type, read)});
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

Value valueOf(const Term& term, Type type, const FileReader& read)
{
    const ArgumentForm form = formOf(term);
    if (!form.byValue || !form.cost(type))
    {
        const auto* variable = std::get_if<VariableName>(&term);
        throw Error(variable != nullptr ? "\"" + variable->name + "\" is no value"
                                        : "a value of type " + std::string(nameOf(type)) + " is needed");
    }
    if (const auto* file = std::get_if<FileName>(&term))
        return read(file->name, type);
    if (const auto* text = std::get_if<std::string>(&term))
        return *text;
    return std::visit([](auto content) { return Value(content); }, std::get<standin::Literal>(term));
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

} // namespace cli
