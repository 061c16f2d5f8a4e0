// Texts of the host's language: declarations as a plug-in registers them, calls as users of the command line
// write them, and whole programs.
#include "fuzz/expect.h"
#include "fuzz/fuzz_host.h"
#include "host/calls/declaration.h"
#include "host/names.h"
#include "script/interpreter.h"
#include "script/parser.h"

#include <algorithm>

namespace
{

using standin::Declaration;
using standin::Error;

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

/// Waveforms of any size take long, and have a target of their own.
bool drawsWaveforms(const script::Program& program)
{
    return std::any_of(program.freeNames.begin(), program.freeNames.end(),
                       [](const auto& name) { return standin::sameName(name.name, "RenderSamplesQVR"); });
}

/// There are no files, little memory and little time.
script::Environment smallEnvironment()
{
    script::Environment environment;
    environment.path = [](const std::string& name) -> std::string { throw Error("no file " + name); };
    environment.arguments = {"program"};
    environment.steps = 300;
    environment.largestObject = 20000;
    return environment;
}

/// What is to become of a filter's old result.
enum class OldResults
{
    Released,
    Left ///< the sepia filter overwrites it, and nobody gives that reference back any more
};

void expectCleanedUp(const standin::Ledger& ledger, OldResults oldResults)
{
    const auto isLeft = [](const std::string& what) {
        return what.starts_with("picture#") && what.ends_with(": reference not given back");
    };
    const bool clean = oldResults == OldResults::Released
                           ? ledger.outstanding.empty()
                           : std::all_of(ledger.outstanding.begin(), ledger.outstanding.end(), isLeft);
    fuzz::expect(clean && ledger.faults.empty(), ledger.describe());
}

/// A host for the time of `use`, which is to leave nothing else behind.
template <class Use>
void withHost(OldResults oldResults, Use use)
{
    fuzz::Input defaults(nullptr, 0);
    fuzz::FuzzHost host(defaults);
    try
    {
        use(host);
    }
    catch (const Error&)
    {
        // That is how a text is refused.
    }
    expectCleanedUp(host.ledger(), oldResults);
}

/// What is read for "@" and a name: short ones can be read.
standin::Value contents(standin::Host& host, const std::string& name, standin::Type type)
{
    constexpr std::size_t longest = 4;
    if (name.size() > longest)
        throw Error(name + ": cannot be read");
    if (type == standin::Type::Picture)
        return host.newPicture(3, 5);
    if (type == standin::Type::MemoryBlock)
        return host.newMemoryBlock(256);
    return host.newString(name);
}

void makeCall(std::string_view text)
{
    const script::Program program = script::parseCall(text);
    if (drawsWaveforms(program))
        return;
    withHost(OldResults::Released, [&](standin::Host& host) {
        standin::Picture photo = host.newPicture(5, 3);
        const int references = photo.referenceCount();
        try
        {
            const script::CallOutcome outcome =
                script::call(program, host, smallEnvironment(),
                             {"photo", photo, [&](const std::string& name, standin::Type type) {
                                  return contents(host, name, type);
                              }});
            fuzz::expect(!outcome.name.empty(), "a result of nothing");
        }
        catch (const Error&)
        {
            // That is how a call is refused.
        }
        photo.removeMask();
        fuzz::expect(photo.referenceCount() == references, "a call has kept its picture");
    });
}

void runProgram(std::string_view text)
{
    const script::Program program = script::parseProgram(text, "program");
    if (drawsWaveforms(program))
        return;
    const bool namesSepia = standin::lowerCase(text).find("picturesepiaqvr") != std::string::npos;
    withHost(namesSepia ? OldResults::Left : OldResults::Released, [&](standin::Host& host) {
        try
        {
            script::run(program, host, smallEnvironment());
        }
        catch (const script::Failure& failure)
        {
            fuzz::expect(failure.what() != failure.text() && failure.place().line > 0,
                         "a failure without place");
        }
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Input input(data, size);
    const std::size_t choice = input.below(3);
    const std::span<const std::uint8_t> rest = input.remainder();
    const std::string_view text(reinterpret_cast<const char*>(rest.data()), rest.size());
    try
    {
        if (choice == 0)
            readDeclaration(text);
        else if (choice == 1)
            makeCall(text);
        else
            runProgram(text);
    }
    catch (const Error&)
    {
        // That is how a text is refused.
    }
    return 0;
}
