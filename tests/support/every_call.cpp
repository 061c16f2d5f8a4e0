#include "tests/support/every_call.h"

#include "tests/support/pictures.h"

#include <map>
#include <variant>

namespace
{

using standin::Arguments;
using standin::Parameter;
using standin::Type;
using standin::Value;

/// What each call gave, as text.
using Outcomes = std::vector<std::pair<std::string, std::string>>;

std::string textOf(const Value& value)
{
    if (value.isNil())
        return "nil";
    if (const auto* picture = std::get_if<standin::Picture>(&value.held()))
    {
        if (picture->isNil())
            return "nil";
        const reference::Picture pixels = download(*picture);
        std::string text = std::to_string(pixels.width) + " x " + std::to_string(pixels.height) + ":";
        for (const reference::Pixel& pixel : pixels.pixels)
            for (const std::uint8_t byte : {pixel.red, pixel.green, pixel.blue, pixel.alpha})
                text += ' ' + std::to_string(byte);
        return text;
    }
    if (const auto* block = std::get_if<standin::MemoryBlock>(&value.held()))
        return std::string(block->bytes().begin(), block->bytes().end());
    if (const auto* string = std::get_if<standin::String>(&value.held()))
        return string->bytes();
    return value.describe();
}

/// Calls everything that the plug-in has registered, with arguments that lead into the loops.
class EveryCall
{
public:
    EveryCall(TestHost& testHost, const reference::Picture& sourcePixels, const AroundCall& aroundCall)
        : host(testHost),
          pixels(sourcePixels),
          around(aroundCall)
    {
        for (const standin::RegisteredMethod& method : host.registered().extensions.at(0).methods)
            callMethod(method, [this](const std::string& name, const Arguments& arguments) {
                return host.call(source(), name, arguments);
            });
        for (const standin::RegisteredMethod& method : host.registered().extensions.at(0).methods)
            if (method.setter != nullptr)
                assign(method,
                       [this](const std::string& name, const Arguments& arguments, const Value& value) {
                           const standin::Picture target = source();
                           host.assign(target, name, arguments, value);
                           return target;
                       });
        for (const standin::RegisteredMethod& method : host.registered().globals)
            callMethod(method, [this](const std::string& name, const Arguments& arguments) {
                return host.callGlobal(name, arguments);
            });
        for (const standin::RegisteredClass& definition : host.registered().classes)
            callFilter(definition);
    }

    Outcomes outcomes;

private:
    standin::Picture source()
    {
        return upload(host, pixels);
    }

    Value argumentFor(const std::string& name, Type type, int position)
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
            return name == "pic" ? upload(host, reference::Picture(2, 2, pixels.at(0, 0))) : source();
        case Type::String:
            return host.callGlobal("PicturetoBinaryStringQVR", {source()});
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

    template <class Call>
    void callMethod(const standin::RegisteredMethod& method, Call call, const std::string& owner = "")
    {
        const std::string text = owner + method.text;
        const std::vector<Parameter>& parameters = method.declaration.parameters;
        std::vector<Value> variables;
        for (const Parameter& parameter : parameters)
            variables.push_back(
                argumentFor(parameter.name, parameter.type, static_cast<int>(variables.size())));
        Arguments arguments;
        for (std::size_t i = 0; i < parameters.size(); ++i)
            arguments.push_back(parameters[i].byref ? standin::byref(variables[i]) : variables[i]);
        const Value result =
            around(text, [&]() -> Value { return call(method.declaration.name, arguments); });
        add(text, result);
        // What is called only to be told that something is missing shows little of the code.
        if (method.declaration.result == Type::Picture || method.declaration.name == "Run")
            EXPECT_TRUE(textOf(result) != "nil" && textOf(result) != "false") << text;
        for (std::size_t i = 0; i < parameters.size(); ++i)
            if (parameters[i].byref)
                add(text + ", " + parameters[i].name, variables[i]);
    }

    template <class Assign>
    void assign(const standin::RegisteredMethod& method, Assign assignTo)
    {
        Arguments arguments;
        for (const Parameter& parameter : method.declaration.parameters)
            arguments.push_back(
                argumentFor(parameter.name, parameter.type, static_cast<int>(arguments.size())));
        const Value value = argumentFor("", method.declaration.result, 0);
        const std::string text = method.text + " assigned";
        add(text,
            around(text, [&]() -> Value { return assignTo(method.declaration.name, arguments, value); }));
    }

    void callFilter(const standin::RegisteredClass& definition)
    {
        standin::Instance filter = host.newInstance(definition.name);
        for (const standin::RegisteredProperty& property : definition.properties)
        {
            const Type type = standin::parseDeclaration(property.name + " as " + property.type).result;
            filter.set(property.name, argumentFor(property.name, type, 1));
            add(definition.name + "." + property.name, filter.get(property.name));
        }
        for (const standin::RegisteredMethod& method : definition.methods)
            if (method.setter != nullptr)
                assign(method,
                       [&](const std::string& name, const Arguments& arguments, const Value& value) -> Value {
                           filter.assign(name, arguments, value);
                           return nullptr;
                       });
        // In the order of their rows, "Close" comes before "Run", and "Run" must find its pictures.
        for (auto method = definition.methods.rbegin(); method != definition.methods.rend(); ++method)
        {
            callMethod(
                *method,
                [&](const std::string& name, const Arguments& arguments) {
                    return filter.call(name, arguments);
                },
                definition.name + ".");
            add(definition.name + " after " + method->text, filter.get("DestinationPicture"));
        }
    }

    void add(const std::string& call, const Value& result)
    {
        outcomes.emplace_back(call, textOf(result));
    }

    TestHost& host;
    const reference::Picture& pixels;
    const AroundCall& around;
};

} // namespace

Outcomes outcomesOfEveryCall(TestHost& host, const reference::Picture& source, const AroundCall& around)
{
    return EveryCall{host, source, around}.outcomes;
}
