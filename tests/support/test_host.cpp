#include "tests/support/test_host.h"

#include "tests/reference/picture.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <stdexcept>

namespace
{

/// The beginning of what a ledger tells: hundreds of pictures may be outstanding, all for one reason.
std::string shortText(const standin::Ledger& ledger)
{
    constexpr std::size_t most = 300;
    const std::string text = ledger.describe();
    return text.size() <= most ? text : text.substr(0, most) + " ...";
}

} // namespace

HostSetup HostSetup::version(double hostVersion) const
{
    HostSetup result = *this;
    result.options.version = hostVersion;
    result.name += ", version " + std::to_string(hostVersion);
    return result;
}

HostSetup HostSetup::newPictures(standin::Storage storage) const
{
    HostSetup result = *this;
    result.options.newPictureStorage = storage;
    result.name += ", new pictures " + std::string(nameOf(storage));
    return result;
}

HostSetup HostSetup::lanes(int limit) const
{
    HostSetup result = *this;
    result.variables["qvrLaneLimit"] = limit;
    result.name += ", " + std::to_string(limit) + " lanes";
    return result;
}

HostSetup HostSetup::streamed() const
{
    HostSetup result = *this;
    result.variables["qvrSmallestStreamed"] = 0;
    result.name += ", streamed";
    return result;
}

HostSetup HostSetup::oddRows(int turn) const
{
    HostSetup result = *this;
    std::vector<int> paddings{1, 3, 12, 0};
    std::rotate(paddings.begin(), paddings.begin() + turn, paddings.end());
    result.options.padding = paddings.front();
    result.options.furtherPaddings.assign(paddings.begin() + 1, paddings.end());
    return result;
}

HostSetup HostSetup::logged() const
{
    HostSetup result = *this;
    result.options.logCalls = true;
    return result;
}

HostSetup HostSetup::without(const std::set<std::string>& functions) const
{
    HostSetup result = *this;
    for (const std::string& function : functions)
    {
        result.options.absent.insert(function);
        result.name += ", without " + function;
    }
    return result;
}

const std::vector<int>& laneCounts()
{
    static const std::vector<int> counts =
        __builtin_cpu_supports("avx2") ? std::vector<int>{4, 8} : std::vector<int>{4};
    return counts;
}

std::string sharedObjectToTest()
{
    const char* const other = std::getenv("PICTUREQVR_SHARED_OBJECT");
    return other != nullptr ? other : build::sharedObject;
}

HostSetup hostSetup(standin::Artefact artefact, standin::Kind kind)
{
    HostSetup setup;
    setup.name = std::string(nameOf(artefact)) + ", " + std::string(nameOf(kind));
    setup.options.artefact = artefact;
    setup.options.kind = kind;
    setup.options.plugin = artefact == standin::Artefact::SharedObject ? sharedObjectToTest() : build::bundle;
    setup.options.freshFill = reference::untouchedByte;
    setup.options.logCalls = false;
    return setup;
}

std::vector<HostSetup> hostSetups(standin::Artefact artefact)
{
    using standin::Kind;
    using standin::Storage;
    return {hostSetup(artefact, Kind::Desktop).newPictures(Storage::GWorld32),
            hostSetup(artefact, Kind::Desktop).newPictures(Storage::GWorld24),
            hostSetup(artefact, Kind::Console).newPictures(Storage::Bitmap),
            hostSetup(artefact, Kind::Web).newPictures(Storage::Bitmap)};
}

TestHost::TestHost(const HostSetup& setup, SourceLine line)
    : Host(setup.options),
      hostSetup(setup),
      trace(line.trace(setup.name))
{
    setVariables();
}

void TestHost::rewind()
{
    Host::rewind();
    setVariables();
}

void TestHost::setVariables()
{
    for (const auto& [name, value] : hostSetup.variables)
    {
        std::int32_t* variable = pluginVariable(name);
        if (variable == nullptr)
            throw std::runtime_error("the plug-in has no variable " + name);
        *variable = value;
    }
}

TestHost::~TestHost()
{
    // A test that has ended early has said what is wrong.
    if (ledgerIgnored || std::uncaught_exceptions() > 0)
        return;
    const standin::Ledger now = ledger();
    EXPECT_TRUE(now.balanced()) << "at the end: " << shortText(now);
}

standin::Storage TestHost::newStorage() const
{
    return hostSetup.options.storageOfNewPictures();
}

void TestHost::expectBalanced(const std::string& when) const
{
    const standin::Ledger now = ledger();
    ASSERT_TRUE(now.balanced()) << when << ": " << shortText(now);
}

std::vector<std::string> TestHost::callNames() const
{
    std::vector<std::string> names;
    for (const std::string& call : callLog())
        names.push_back(call.substr(0, call.find('(')));
    return names;
}

int TestHost::callsOf(const std::string& start) const
{
    const std::string wanted = start.find('(') == std::string::npos ? start + "(" : start;
    return static_cast<int>(std::count_if(callLog().begin(), callLog().end(),
                                          [&](const std::string& call) { return call.starts_with(wanted); }));
}

std::vector<standin::Artefact> bundlesOfThisBuild()
{
    if (std::string(build::bundle).empty())
        return {};
    return {standin::Artefact::MacBundle};
}
