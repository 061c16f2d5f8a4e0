#include "tests/support/test_host.h"

#include "tests/reference/picture.h"

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

HostSetup hostSetup(standin::Artefact artefact, standin::Kind kind)
{
    HostSetup setup;
    setup.name = std::string(nameOf(artefact)) + ", " + std::string(nameOf(kind));
    setup.options.artefact = artefact;
    setup.options.kind = kind;
    setup.options.plugin = artefact == standin::Artefact::SharedObject ? build::sharedObject : build::bundle;
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

TestHost::TestHost(const HostSetup& setup) : Host(setup.options), hostSetup(setup)
{
}

TestHost::~TestHost()
{
    if (!ledgerIgnored)
        expectBalanced("at the end");
}

standin::Storage TestHost::newStorage() const
{
    return hostSetup.options.storageOfNewPictures();
}

void TestHost::expectBalanced(const std::string& when) const
{
    const standin::Ledger now = ledger();
    EXPECT_TRUE(now.balanced()) << hostSetup.name << ", " << when << ": " << now.describe();
}

void TestHost::limitLanes(int lanes)
{
    setVariable("qvrLaneLimit", lanes);
}

void TestHost::streamEverything()
{
    setVariable("qvrSmallestStreamed", 0);
}

void TestHost::setVariable(const char* name, std::int32_t value)
{
    std::int32_t* variable = pluginVariable(name);
    ASSERT_NE(variable, nullptr) << "the plug-in has no variable " << name;
    *variable = value;
}

std::vector<standin::Artefact> bundlesOfThisBuild()
{
    if (std::string(build::bundle).empty())
        return {};
    return {standin::Artefact::MacBundle};
}
