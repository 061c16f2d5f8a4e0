#include "host/calls/overloads.h"

#include <algorithm>

namespace standin
{

namespace
{

bool contains(const std::vector<Type>& types, Type type)
{
    return std::find(types.begin(), types.end(), type) != types.end();
}

struct FormOf
{
    ArgumentForm operator()(std::nullptr_t) const
    {
        return formOfObject();
    }
    ArgumentForm operator()(bool) const
    {
        return {{Type::Boolean}};
    }
    ArgumentForm operator()(std::int32_t) const
    {
        return {{Type::Integer}, {Type::Double, Type::Colour, Type::UInt32}};
    }
    ArgumentForm operator()(std::uint32_t) const
    {
        return {{Type::Colour, Type::UInt32}, {Type::Integer, Type::Double}};
    }
    ArgumentForm operator()(double) const
    {
        return {{Type::Double}};
    }
    ArgumentForm operator()(const std::string&) const
    {
        return {{Type::String}};
    }
    ArgumentForm operator()(const Picture&) const
    {
        return {{Type::Picture}};
    }
    ArgumentForm operator()(const MemoryBlock&) const
    {
        return {{Type::MemoryBlock}};
    }
    ArgumentForm operator()(const String&) const
    {
        return {{Type::String}};
    }
    ArgumentForm operator()(VariableArgument argument) const
    {
        ArgumentForm form = formOf(*argument.variable);
        form.byValue = false;
        form.byReference = true;
        return form;
    }
};

std::optional<int> argumentCost(const ArgumentForm& argument, const Parameter& parameter)
{
    const bool canBePassed = parameter.byref ? argument.byReference : argument.byValue;
    return canBePassed ? argument.cost(parameter.type) : std::nullopt;
}

std::optional<int> callCost(const Declaration& declaration, const std::vector<ArgumentForm>& arguments)
{
    if (arguments.size() > declaration.parameters.size())
        return std::nullopt;
    int total = 0;
    for (std::size_t index = 0; index < declaration.parameters.size(); ++index)
    {
        const Parameter& parameter = declaration.parameters[index];
        if (index >= arguments.size())
        {
            if (!parameter.defaultValue)
                return std::nullopt;
            continue;
        }
        const std::optional<int> cost = argumentCost(arguments[index], parameter);
        if (!cost)
            return std::nullopt;
        total += *cost;
    }
    return total;
}

/// How many of the first arguments an overload takes.
std::size_t fitting(const Declaration& declaration, const std::vector<ArgumentForm>& arguments)
{
    const std::size_t most = std::min(arguments.size(), declaration.parameters.size());
    std::size_t count = 0;
    while (count < most && argumentCost(arguments[count], declaration.parameters[count]))
        ++count;
    return count;
}

/// "argument 2 is of type double, width of type integer".
std::string misfit(const Declaration& declaration, const std::vector<ArgumentForm>& arguments,
                   std::size_t index)
{
    const std::string argument = "argument " + std::to_string(index + 1);
    if (index == declaration.parameters.size())
        return argument + " is one too many";
    const Parameter& parameter = declaration.parameters[index];
    if (index == arguments.size())
        return argument + ", " + parameter.name + ", is missing";
    const ArgumentForm& form = arguments[index];
    if (parameter.byref && !form.byReference)
        return argument + " is no variable, and " + parameter.name + " is ByRef";
    if (!parameter.byref && !form.byValue)
        return argument + " has no value";
    const std::string wanted = parameter.name + " of type " + std::string(nameOf(parameter.type));
    if (form.asItIs.size() != 1)
        return argument + " is no value for " + wanted;
    return argument + " is of type " + std::string(nameOf(form.asItIs.front())) + ", " + wanted;
}

} // namespace

std::optional<int> ArgumentForm::cost(Type type) const
{
    if (contains(asItIs, type))
        return 0;
    if (contains(converted, type))
        return 1;
    return std::nullopt;
}

ArgumentForm formOfObject()
{
    return {{Type::Picture, Type::MemoryBlock, Type::String}};
}

ArgumentForm formOf(const Value& value)
{
    return std::visit(FormOf(), value.held());
}

ArgumentForm formOfNewVariable()
{
    return {{all<Type>.begin(), all<Type>.end()}, {}, false, true};
}

const RegisteredMethod& chooseOverload(const std::vector<const RegisteredMethod*>& overloads,
                                       std::string_view name, const std::vector<ArgumentForm>& arguments)
{
    const RegisteredMethod* best = nullptr;
    int bestCost = 0;
    std::string choices;
    const Declaration* nearest = nullptr;
    std::size_t fits = 0;
    for (const RegisteredMethod* method : overloads)
    {
        const std::optional<int> cost = callCost(method->declaration, arguments);
        if (cost && (best == nullptr || *cost < bestCost))
        {
            best = method;
            bestCost = *cost;
        }
        const std::size_t count = fitting(method->declaration, arguments);
        if (nearest == nullptr || count > fits)
        {
            nearest = &method->declaration;
            fits = count;
        }
        choices += (choices.empty() ? "" : " or ") + method->declaration.parameterText();
    }
    if (best != nullptr)
        return *best;
    if (overloads.empty())
        throw Error("there is no method " + std::string(name));
    throw ArgumentError(nearest->name + " takes " + choices + "; " + misfit(*nearest, arguments, fits), fits);
}

} // namespace standin
