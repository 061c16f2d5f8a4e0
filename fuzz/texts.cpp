// Texts of the host's language: declarations as a plug-in registers them, calls as users of the command line
// write them.
#include "cli/call_text.h"
#include "cli/method_call.h"
#include "fuzz/expect.h"
#include "fuzz/fuzz_host.h"
#include "host/calls/declaration.h"

namespace
{

using standin::Declaration;
using standin::Error;
using standin::RegisteredMethod;

/// What a declaration says, in one way of writing it.
std::string textOf(const Declaration& declaration)
{
    std::string text = declaration.name + declaration.parameterText();
    if (declaration.result != standin::Type::Nothing)
        text += " as " + std::string(nameOf(declaration.result));
    return text;
}

/// What is read can be written and read again.
void readDeclaration(std::string_view text)
{
    const std::string once = textOf(standin::parseDeclaration(text));
    std::string twice;
    try
    {
        twice = textOf(standin::parseDeclaration(once));
    }
    catch (const Error& error)
    {
        fuzz::fail(error.what());
    }
    fuzz::expect(once == twice, "\"" + once + "\" is read as \"" + twice + "\"");
}

const std::vector<const RegisteredMethod*>& allMethods()
{
    static const std::vector<const RegisteredMethod*> methods = [] {
        fuzz::Input defaults(nullptr, 0);
        // Lives on, as what is registered lies in it.
        static const fuzz::FuzzHost host(defaults);
        std::vector<const RegisteredMethod*> result;
        const auto add = [&](const std::vector<RegisteredMethod>& rows) {
            for (const RegisteredMethod& row : rows)
                result.push_back(&row);
        };
        add(host.registered().globals);
        for (const standin::RegisteredClass& definition : host.registered().extensions)
            add(definition.methods);
        for (const standin::RegisteredClass& definition : host.registered().classes)
            add(definition.methods);
        return result;
    }();
    return methods;
}

/// Of one method the call is made out, whatever its name; its arguments are of the declared types then.
void readCall(const RegisteredMethod& method, std::string_view text)
{
    const cli::CallText call = cli::parseCall(text);
    const cli::FileReader read = [](const std::string& name, standin::Type) -> standin::Value {
        if (name.size() > 4)
            throw Error(name + ": cannot be read");
        return nullptr;
    };
    const cli::MethodCall made({&method}, call, read);
    fuzz::expect(made.isAssignment() == call.assigned.has_value(), "an assignment was lost");
    std::size_t variables = 0;
    for (std::size_t index = 0; index < call.arguments.size(); ++index)
        variables += method.declaration.parameters.at(index).byref;
    fuzz::expect(made.variables().size() == variables, "not every byref argument has its variable");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Input input(data, size);
    const std::size_t choice = input.byte();
    const std::span<const std::uint8_t> rest = input.remainder();
    const std::string_view text(reinterpret_cast<const char*>(rest.data()), rest.size());
    const std::vector<const RegisteredMethod*>& methods = allMethods();
    try
    {
        if (choice < methods.size())
            readCall(*methods[choice], text);
        else
            readDeclaration(text);
    }
    catch (const Error&)
    {
        // That is how a text is refused.
    }
    return 0;
}
