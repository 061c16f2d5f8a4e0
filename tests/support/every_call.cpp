#include "tests/support/every_call.h"

#include "tests/reference/binary_string.h"
#include "tests/support/pictures.h"

#include <map>
#include <memory>
#include <variant>

namespace
{

using standin::Arguments;
using standin::Host;
using standin::Instance;
using standin::Parameter;
using standin::Picture;
using standin::RegisteredClass;
using standin::RegisteredMethod;
using standin::RegisteredProperty;
using standin::Type;
using standin::Value;

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
        piece.arguments.push_back(parameters[i].byref ? standin::byref(piece.variables[i])
                                                      : piece.variables[i]);
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
    return standin::parseDeclaration(property.name + " as " + property.type).result;
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

std::vector<RegisteredCall> everyCall(const standin::Registered& registered)
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

TellingArguments::TellingArguments(reference::Picture source, PictureMaker pictureMaker)
    : pixels(std::move(source)),
      makePicture(std::move(pictureMaker))
{
    if (!makePicture)
        makePicture = [](Host& host, const reference::Picture& picture, int) {
            return upload(host, picture);
        };
}

Value TellingArguments::operator()(Host& host, const std::string& name, Type type, int position) const
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
    case Type::Colour:
        return position == 0 ? colourOf(pixels.at(5, 3)) : 0x30C0F0U;
    case Type::Double:
        return 0.75 - position;
    case Type::Picture:
        // The sepia filter gives up no old one.
        if (name == "DestinationPicture")
            return nullptr;
        if (name == "pic")
            return makePicture(host, reference::Picture(2, 2, pixels.at(0, 0)), position);
        return makePicture(host, pixels, position);
    case Type::String:
        return host.newString(reference::toBinaryString(pixels), standin::encodingNone);
    case Type::MemoryBlock:
    {
        standin::MemoryBlock block = host.newMemoryBlock(1024);
        for (int i = 0; i < block.size(); ++i)
            block.data()[i] = static_cast<std::uint8_t>(i * 7);
        return block;
    }
    case Type::Nothing:
        break;
    }
    return nullptr;
}

std::string outcomeText(const reference::Picture& picture)
{
    std::string text = sizeText(picture.width, picture.height) + ":";
    for (const reference::Pixel& pixel : picture.pixels)
        for (const std::uint8_t byte : {pixel.red, pixel.green, pixel.blue, pixel.alpha})
            text += ' ' + std::to_string(byte);
    return text;
}

std::string outcomeText(const Value& value)
{
    if (value.isNil())
        return "nil";
    if (const auto* picture = std::get_if<Picture>(&value.held()))
    {
        if (picture->isNil())
            return "nil";
        return outcomeText(download(*picture));
    }
    if (const auto* block = std::get_if<standin::MemoryBlock>(&value.held()))
        return block->isNil() ? "nil" : std::string(block->bytes().begin(), block->bytes().end());
    if (const auto* string = std::get_if<standin::String>(&value.held()))
        return string->isNil() ? "nil" : string->bytes();
    return value.describe();
}

std::vector<std::pair<std::string, std::string>>
outcomesOfEveryCall(TestHost& host, const reference::Picture& source, const AroundCall& around)
{
    std::vector<std::pair<std::string, std::string>> outcomes;
    for (const RegisteredCall& call : everyCall(host.registered()))
    {
        const PreparedCall prepared = call.prepare(host, TellingArguments{source});
        const std::string result = outcomeText(around(call.text, prepared.run));
        outcomes.emplace_back(call.text, result);
        // What is called only to be told that something is missing shows little of the code.
        const bool isProperty = call.text.find('.') != std::string::npos;
        if ((call.result == Type::Picture && !isProperty) || call.text.ends_with(".Run as boolean"))
            EXPECT_TRUE(result != "nil" && result != "false") << call.text;
        for (const auto& [name, value] : prepared.leavings())
            outcomes.emplace_back(call.text + ", " + name, outcomeText(value));
    }
    return outcomes;
}
