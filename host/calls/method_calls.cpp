/// \file
/// Calls of the plug-in's methods and accessors by declaration.
#include "host/calls/cdecl_call.h"
#include "host/calls/overloads.h"
#include "host/core/core.h"
#include "host/error.h"
#include "host/services/service_call.h"

#include <cstring>
#include <deque>

namespace standin
{

namespace
{

std::vector<ArgumentForm> formsOf(const Arguments& arguments)
{
    std::vector<ArgumentForm> forms;
    for (const Value& argument : arguments)
        forms.push_back(formOf(argument));
    return forms;
}

/// Throws Error when a value cannot be assigned to what is called `name`.
void checkAssignable(const std::string& name, Type type, const Value& value)
{
    const ArgumentForm form = formOf(value);
    if (!form.byValue || !form.cost(type))
        throw Error(name + " takes a value of type " + std::string(nameOf(type)));
}

/// The arguments of one call, and what they need for as long as it runs.
class CallFrame
{
public:
    explicit CallFrame(Core& host) : core(host)
    {
    }

    void push(const Value& value, const Parameter& parameter)
    {
        const auto* variable = std::get_if<VariableArgument>(&value.held());
        if (variable == nullptr)
            pushPlain(value, parameter.type);
        else
            pushVariable(*variable->variable, parameter.type);
    }

    void pushDefault(const Literal& value, Type type)
    {
        pushPlain(std::visit([](auto content) { return Value(content); }, value), type);
    }

    void pushPlain(const Value& value, Type type)
    {
        switch (type)
        {
        case Type::Boolean:
            slots.push(value.boolean());
            break;
        case Type::Integer:
        case Type::UInt32:
        case Type::Colour:
            slots.push(word(value));
            break;
        case Type::Double:
            slots.push(number(value));
            break;
        default:
            slots.push(handle(value));
            break;
        }
    }

    /// Gives the callers' variables what the call left in theirs.
    void writeBack()
    {
        for (Variable& variable : variables)
            *variable.target = core.takeResult(variable.type, variable.words[0], variable.asDouble());
    }

    Slots slots;

private:
    struct Variable
    {
        Value* target;
        Type type;
        alignas(double) std::uint32_t words[2]{};

        double asDouble() const
        {
            double value = 0;
            std::memcpy(&value, words, sizeof value);
            return value;
        }
    };

    /// The plug-in sees a variable that owns its reference, so the reference changes sides for the time of
    /// the call. A variable that is passed twice is one variable to it too.
    void pushVariable(Value& value, Type type)
    {
        for (const Variable& variable : variables)
            if (variable.target == &value && variable.type == type)
            {
                slots.push(static_cast<const void*>(variable.words));
                return;
            }
        Variable& variable = variables.emplace_back(Variable{&value, type});
        if (type == Type::Double)
        {
            const double content = number(value);
            std::memcpy(variable.words, &content, sizeof content);
        }
        else if (type == Type::Boolean)
            variable.words[0] = value.boolean();
        else if (type == Type::Integer || type == Type::UInt32 || type == Type::Colour)
            variable.words[0] = word(value);
        else
        {
            const void* content = handle(value);
            variable.words[0] = reinterpret_cast<std::uintptr_t>(content);
            if (Object* object = core.lookUp(content))
                core.retain(*object);
            value = nullptr;
        }
        slots.push(static_cast<const void*>(variable.words));
    }

    static std::uint32_t word(const Value& value)
    {
        if (const auto* integer = std::get_if<std::int32_t>(&value.held()))
            return static_cast<std::uint32_t>(*integer);
        return value.colour();
    }

    static double number(const Value& value)
    {
        if (const auto* unsignedValue = std::get_if<std::uint32_t>(&value.held()))
            return *unsignedValue;
        return value.number();
    }

    const void* handle(const Value& value)
    {
        if (const auto* text = std::get_if<std::string>(&value.held()))
            return strings.emplace_back(core.adopt<String>(&core.make<StringObject>(*text, encodingUtf8)))
                .handle();
        return std::visit(
            [](const auto& content) -> const void* {
                if constexpr (std::is_base_of_v<Reference, std::decay_t<decltype(content)>>)
                    return content.handle();
                else
                    return nullptr;
            },
            value.held());
    }

    Core& core;
    std::deque<Variable> variables;
    std::vector<String> strings;
};

const RegisteredProperty& findProperty(const InstanceObject& instance, std::string_view name)
{
    for (const RegisteredProperty& property : instance.definition.properties)
        if (sameName(property.name, name))
            return property;
    throw Error(instance.definition.name + " has no property " + std::string(name));
}

/// The type of a property, from its registered name.
Type propertyType(const RegisteredProperty& property)
{
    return parseDeclaration(property.name + " as " + property.type).result;
}

} // namespace

Value Core::callMethod(const std::vector<const RegisteredMethod*>& overloads, std::string_view name,
                       Self self, const Arguments& arguments)
{
    return invoke(chooseOverload(overloads, name, formsOf(arguments)), self, arguments, nullptr);
}

Value Core::assignMethod(const std::vector<const RegisteredMethod*>& overloads, std::string_view name,
                         Self self, const Arguments& arguments, const Value& value)
{
    const RegisteredMethod& method = chooseOverload(overloads, name, formsOf(arguments));
    if (method.setter == nullptr)
        throw Error(method.declaration.name + " cannot be assigned to");
    const Type type = method.declaration.result;
    checkAssignable(method.declaration.name, type, value);
    return invoke(method, self, arguments, &value);
}

Value Core::invoke(const RegisteredMethod& method, Self self, const Arguments& arguments,
                   const Value* assigned)
{
    const Declaration& declaration = method.declaration;
    const REALanyFunction function = assigned == nullptr ? method.handler : method.setter;
    if (function == nullptr)
        throw Error(declaration.name + " was registered without a function");

    CallFrame frame(*this);
    if (self.present)
        frame.slots.push(self.handle);
    for (std::size_t index = 0; index < declaration.parameters.size(); ++index)
    {
        const Parameter& parameter = declaration.parameters[index];
        if (index < arguments.size())
            frame.push(arguments[index], parameter);
        else
            frame.pushDefault(*parameter.defaultValue, parameter.type);
    }
    if (assigned != nullptr)
        frame.pushPlain(*assigned, declaration.result);

    Value result =
        callFunction(function, frame.slots, assigned == nullptr ? declaration.result : Type::Nothing);
    frame.writeBack();
    return result;
}

Value Core::callFunction(REALanyFunction function, const Slots& slots, Type type)
{
    std::uint32_t word = 0;
    double number = 0;
    inside([&] {
        if (type == Type::Double)
            number = callForDouble(function, slots, options.stackSkew);
        else
            word = callForWord(function, slots, options.stackSkew);
    });
    Value result = takeResult(type, word, number);
    finishCall(result);
    return result;
}

Value Core::takeResult(Type type, std::uint32_t word, double number)
{
    // Only the low byte of a boolean is defined, and only the three channels of a colour are looked at.
    constexpr std::uint32_t byteMask = 0xFF;
    constexpr std::uint32_t colourMask = 0xFFFFFF;

    const auto* handle = reinterpret_cast<const void*>(static_cast<std::uintptr_t>(word));
    switch (type)
    {
    case Type::Nothing:
        return nullptr;
    case Type::Boolean:
        return (word & byteMask) != 0;
    case Type::Integer:
        return static_cast<std::int32_t>(word);
    case Type::UInt32:
        return word;
    case Type::Colour:
        return word & colourMask;
    case Type::Double:
        return number;
    case Type::Picture:
        return adopt<Picture>(handle == nullptr ? nullptr : expect<PictureObject>(handle, "result"));
    case Type::MemoryBlock:
        return adopt<MemoryBlock>(handle == nullptr ? nullptr : expect<MemoryBlockObject>(handle, "result"));
    case Type::String:
        return adopt<String>(handle == nullptr ? nullptr : expect<StringObject>(handle, "result"));
    }
    return nullptr;
}

void Core::finishCall(Value& result)
{
    if (port != defaultPort() || device != defaultDevice())
    {
        fault("the call left the QuickDraw port changed");
        port = defaultPort();
        device = defaultDevice();
    }
    if (ExceptionObject* exception = std::exchange(raised, nullptr))
    {
        RaisedException& report = result.raised.emplace();
        report.className = exception->className;
        report.errorNumber = exception->errorNumber;
        if (const StringObject* message = exception->message)
        {
            report.message = message->text;
            report.messageIsNull = false;
            report.messageEncoding = message->encoding;
        }
        releaseHeld(*exception);
    }
    if (pendingError)
        std::rethrow_exception(std::exchange(pendingError, nullptr));
}

InstanceObject& Core::makeInstance(std::string_view className)
{
    const RegisteredClass* definition = registered.findClass(className);
    if (definition == nullptr)
        throw Error("there is no class " + std::string(className));
    auto block = GuardedBlock::make(static_cast<std::size_t>(definition->hostWord + definition->dataSize));
    if (!block)
        throw Error("no memory for an instance of " + definition->name);
    auto& instance = make<InstanceObject>(*definition, std::move(*block));
    if (definition->constructor != nullptr)
    {
        Slots slots;
        slots.push(static_cast<const void*>(instance.handle()));
        callFunction(definition->constructor, slots, Type::Nothing);
    }
    return instance;
}

Value Core::getProperty(InstanceObject& instance, std::string_view name)
{
    const RegisteredProperty& property = findProperty(instance, name);
    const Type type = propertyType(property);
    if (!property.isField())
    {
        Slots slots;
        slots.push(static_cast<const void*>(instance.handle()));
        slots.push(static_cast<std::int32_t>(property.parameter));
        return callFunction(property.getter, slots, type);
    }
    double number = 0;
    std::uint32_t word = 0;
    const std::uint8_t* field = instance.data() + property.parameter;
    std::memcpy(&word, field, sizeof word);
    if (type == Type::Double)
        std::memcpy(&number, field, sizeof number);
    // The field keeps its reference; the caller gets one of its own.
    if (type == Type::Picture && word != 0)
        return wrap<Picture>(expect<PictureObject>(reinterpret_cast<const void*>(word), "property"));
    return takeResult(type, word, number);
}

void Core::setProperty(InstanceObject& instance, std::string_view name, const Value& value)
{
    const RegisteredProperty& property = findProperty(instance, name);
    const Type type = propertyType(property);
    checkAssignable(property.name, type, value);

    if (!property.isField())
    {
        CallFrame frame(*this);
        frame.slots.push(static_cast<const void*>(instance.handle()));
        frame.slots.push(static_cast<std::int32_t>(property.parameter));
        frame.pushPlain(value, type);
        callFunction(property.setter, frame.slots, Type::Nothing);
        return;
    }
    CallFrame frame(*this);
    frame.pushPlain(value, type);
    std::uint8_t* field = instance.data() + property.parameter;
    if (type == Type::Picture)
    {
        const void* old = nullptr;
        std::memcpy(&old, field, sizeof old);
        if (Object* picture = target(value.picture()))
            retain(*picture);
        if (Object* picture = old == nullptr ? nullptr : expectAny(old, "property"))
            release(*picture);
    }
    std::memcpy(field, frame.slots.data(), frame.slots.count() * sizeof(std::uint32_t));
}

} // namespace standin
