#include "host/every_call.h"

#include <map>
#include <memory>

namespace standin
{

namespace
{

/// What a call works on for as long as it can be run.
struct Workpiece
{
    Picture self;
    Instance filter;
    std::vector<Value> variables;
    Arguments arguments;
    Value assigned;
};

using Leavings = std::vector<std::pair<std::string, Value>>;

/// Makes the arguments of a method. Variables are passed where it wants them.
void makeArguments(Workpiece& piece, const std::vector<Parameter>& parameters, Host& host,
                   const ArgumentMaker& make)
{
    for (const Parameter& parameter : parameters)
        piece.variables.push_back(
            make(host, parameter.name, parameter.type, static_cast<int>(piece.variables.size())));
    for (std::size_t i = 0; i < parameters.size(); ++i)
        piece.arguments.push_back(parameters[i].byref ? byref(piece.variables[i]) : piece.variables[i]);
}

Leavings leavingsIn(Workpiece& piece, const std::vector<Parameter>& parameters)
{
    Leavings leavings;
    for (std::size_t i = 0; i < parameters.size(); ++i)
        if (parameters[i].byref)
            leavings.emplace_back(parameters[i].name, piece.variables[i]);
    if (piece.filter)
        leavings.emplace_back("DestinationPicture", piece.filter.get("DestinationPicture"));
    return leavings;
}

enum class Access
{
    Call,
    Assignment
};

using Opening = std::function<void(Workpiece&, Host&, const ArgumentMaker&)>;
using Running = std::function<Value(Workpiece&, Host&)>;

/// What is declared so, done by `run` with what `open` makes of the workpiece first.
RegisteredCall callOf(const std::string& text, const std::vector<Parameter>& parameters, Type type,
                      Access access, const Opening& open, const Running& run)
{
    return {
        text, type, [=](Host& host, const ArgumentMaker& make) -> PreparedCall {
            auto piece = std::make_shared<Workpiece>();
            open(*piece, host, make);
            makeArguments(*piece, parameters, host, make);
            if (access == Access::Assignment)
                piece->assigned = make(host, "", type, 0);
            return {[=, &host] { return run(*piece, host); }, [=] { return leavingsIn(*piece, parameters); }};
        }};
}

RegisteredCall methodCall(const std::string& prefix, const RegisteredMethod& method, const Opening& open,
                          const Running& run)
{
    return callOf(prefix + method.text, method.declaration.parameters, method.declaration.result,
                  Access::Call, open, run);
}

RegisteredCall methodAssignment(const std::string& prefix, const RegisteredMethod& method,
                                const Opening& open, const Running& run)
{
    return callOf(prefix + method.text + " assigned", method.declaration.parameters,
                  method.declaration.result, Access::Assignment, open, run);
}

void addPictureMethods(std::vector<RegisteredCall>& calls, const RegisteredClass& extension)
{
    const auto open = [](Workpiece& piece, Host& host, const ArgumentMaker& make) {
        piece.self = make(host, "self", Type::Picture, -1).picture();
    };
    for (const RegisteredMethod& method : extension.methods)
    {
        const std::string name = method.declaration.name;
        calls.push_back(methodCall("", method, open, [name](Workpiece& piece, Host& host) {
            return host.call(piece.self, name, piece.arguments);
        }));
        if (method.setter != nullptr)
            calls.push_back(methodAssignment("", method, open, [name](Workpiece& piece, Host& host) {
                host.assign(piece.self, name, piece.arguments, piece.assigned);
                return Value(piece.self);
            }));
    }
}

Type typeOf(const RegisteredProperty& property)
{
    return parseDeclaration(property.name + " as " + property.type).result;
}

void addFilter(std::vector<RegisteredCall>& calls, const RegisteredClass& definition)
{
    const std::string prefix = definition.name + ".";
    const auto open = [name = definition.name, properties = definition.properties](
                          Workpiece& piece, Host& host, const ArgumentMaker& make) {
        piece.filter = host.newInstance(name);
        for (const RegisteredProperty& property : properties)
            piece.filter.set(property.name, make(host, property.name, typeOf(property), 1));
    };
    const auto add = [&](const std::string& text, Type type, Access access, const Running& run) {
        calls.push_back(callOf(prefix + text, {}, type, access, open, run));
    };

    add("constructor", Type::Nothing, Access::Call, [name = definition.name](Workpiece& piece, Host& host) {
        piece.filter = host.newInstance(name);
        return Value(nullptr);
    });
    add("destructor", Type::Nothing, Access::Call, [](Workpiece& piece, Host&) {
        piece.filter = {};
        return Value(nullptr);
    });
    for (const RegisteredProperty& property : definition.properties)
    {
        // Fields are the host's own affair.
        if (property.isField())
            continue;
        const std::string name = property.name;
        add(name, typeOf(property), Access::Call,
            [name](Workpiece& piece, Host&) { return piece.filter.get(name); });
        add(name + " assigned", typeOf(property), Access::Assignment, [name](Workpiece& piece, Host&) {
            piece.filter.set(name, piece.assigned);
            return piece.filter.get(name);
        });
    }
    for (const RegisteredMethod& method : definition.methods)
    {
        const std::string name = method.declaration.name;
        calls.push_back(methodCall(prefix, method, open, [name](Workpiece& piece, Host&) {
            return piece.filter.call(name, piece.arguments);
        }));
        if (method.setter != nullptr)
            calls.push_back(methodAssignment(prefix, method, open, [name](Workpiece& piece, Host&) {
                piece.filter.assign(name, piece.arguments, piece.assigned);
                return piece.filter.call(name, piece.arguments);
            }));
    }
}

} // namespace

std::vector<RegisteredCall> everyCall(const Registered& registered)
{
    std::vector<RegisteredCall> calls;
    for (const RegisteredClass& extension : registered.extensions)
        addPictureMethods(calls, extension);
    for (const RegisteredMethod& method : registered.globals)
        calls.push_back(methodCall(
            "", method, [](Workpiece&, Host&, const ArgumentMaker&) {},
            [name = method.declaration.name](Workpiece& piece, Host& host) {
                return host.callGlobal(name, piece.arguments);
            }));
    for (const RegisteredClass& definition : registered.classes)
        addFilter(calls, definition);
    return calls;
}

Value tellingArgument(Host& host, const std::string& name, Type type, int position)
{
    static const std::map<std::string, int> telling{{"SampleCount", 400}, {"Bits", 16}, {"Height", 30},
                                                    {"Amount", 150},      {"MaxX", 40}, {"MaxY", 5}};
    switch (type)
    {
    case Type::Boolean:
        return true;
    case Type::Integer:
        return telling.contains(name) ? telling.at(name) : position % 4 < 2 ? 2 : 36;
    case Type::UInt32:
        return static_cast<std::uint32_t>(position);
    case Type::Double:
        return 0.75 - position;
    case Type::MemoryBlock:
    {
        MemoryBlock block = host.newMemoryBlock(1024);
        for (int i = 0; i < block.size(); ++i)
            block.data()[i] = static_cast<std::uint8_t>(i * 7);
        return block;
    }
    default:
        return nullptr;
    }
}

} // namespace standin
