#include "tests/support/test_host.h"

#include "tests/reference/picture.h"

namespace
{

const char* kindName(standin::Kind kind)
{
    switch (kind)
    {
    case standin::Kind::Desktop:
        return "desktop";
    case standin::Kind::Console:
        return "console";
    case standin::Kind::Web:
        return "web";
    case standin::Kind::Unknown:
        break;
    }
    return "unknown kind";
}

const char* storageName(standin::Storage storage)
{
    constexpr const char* names[] = {"GWorld32", "GWorld24", "GWorld16", "GWorld8", "Bitmap", "Drawable"};
    return names[static_cast<int>(storage)];
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
    result.name += std::string(", new pictures ") + storageName(storage);
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
    setup.name = std::string(artefactName(artefact)) + ", " + kindName(kind);
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
    if (hostSetup.options.newPictureStorage)
        return *hostSetup.options.newPictureStorage;
    const standin::Kind kind = hostSetup.options.kind;
    return kind == standin::Kind::Console || kind == standin::Kind::Web ? standin::Storage::Bitmap
                                                                        : standin::Storage::GWorld32;
}

void TestHost::expectBalanced(const std::string& when) const
{
    const standin::Ledger now = ledger();
    EXPECT_TRUE(now.balanced()) << hostSetup.name << ", " << when << ": " << now.describe();
}

void TestHost::limitLanes(int lanes)
{
    std::int32_t* limit = pluginVariable("qvrLaneLimit");
    ASSERT_NE(limit, nullptr) << "the plug-in has no variable qvrLaneLimit";
    *limit = lanes;
}

const char* artefactName(standin::Artefact artefact)
{
    return artefact == standin::Artefact::SharedObject ? "SharedObject" : "MacBundle";
}

std::vector<standin::Artefact> bundlesOfThisBuild()
{
    if (std::string(build::bundle).empty())
        return {};
    return {standin::Artefact::MacBundle};
}
