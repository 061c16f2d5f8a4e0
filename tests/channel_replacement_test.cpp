#include "tests/reference/channels.h"
#include "tests/support/operation_checks.h"

namespace
{

using reference::Channel;
using standin::Picture;

struct Member
{
    const char* method;
    Channel channel;
};

constexpr Member members[] = {{"ReplaceRedChannelQVR", Channel::Red},
                              {"ReplaceGreenChannelQVR", Channel::Green},
                              {"ReplaceBlueChannelQVR", Channel::Blue}};

class ChannelReplacement : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(ChannelReplacement);

TEST_P(ChannelReplacement, WhitePictureTakesAChannelFromABlackOne)
{
    constexpr std::uint32_t wanted[] = {0x00FFFF, 0xFF00FF, 0xFFFF00};
    forEachHost(artefact(), [&](TestHost& host) {
        const Picture white = upload(host, reference::Picture{3, 2, reference::pixelOf(0xFFFFFF)});
        const Picture black = upload(host, reference::Picture{3, 2, reference::pixelOf(0x000000)});
        for (int i = 0; i < 3; ++i)
            expectCall(reference::Picture{3, 2, reference::pixelOf(wanted[i])}, host, white,
                       members[i].method, {black});
    });
}

TEST_P(ChannelReplacement, OwnChannelGivesAnOpaqueCopy)
{
    forEachHost(artefact(), [&](TestHost& host) {
        Random random{1};
        const reference::Picture pixels = randomPicture(random, 21, 4);
        const Picture source = upload(host, pixels);
        for (const Member& member : members)
            expectCall(reference::opaque(pixels), host, source, member.method, {source});
    });
}

TEST_P(ChannelReplacement, ChannelPictureMustBeAtLeastAsLarge)
{
    forEachHost(artefact(), [&](TestHost& host) {
        Random random{2};
        const Picture source = upload(host, randomPicture(random, 9, 5));
        for (const Member& member : members)
        {
            for (const auto& [width, height] :
                 {std::pair{8, 5}, std::pair{9, 4}, std::pair{8, 6}, std::pair{10, 4}})
                expectNil(host, source, member.method, {host.newPicture(width, height)});
            for (const auto& [width, height] :
                 {std::pair{9, 5}, std::pair{10, 5}, std::pair{9, 6}, std::pair{30, 20}})
            {
                const Picture larger = upload(host, randomPicture(random, width, height));
                expectCall(reference::replaceChannel(download(source), download(larger), member.channel),
                           host, source, member.method, {larger});
            }
        }
    });
}

TEST_P(ChannelReplacement, EqualsTheReference)
{
    forEachSource(artefact(), [](TestHost& host, const Picture& source, Random& random) {
        const Member& member = members[random.between(0, 2)];
        const Picture channel =
            upload(host,
                   randomPictureOfAnyPalette(random, source.width() + random.between(0, 3),
                                             source.height() + random.between(0, 2)),
                   random.oneOf(sourceStorages(host)));
        const auto before = channel.rgba();
        expectCall(reference::replaceChannel(download(source), download(channel), member.channel), host,
                   source, member.method, {channel});
        EXPECT_TRUE(before == channel.rgba()) << "the channel picture was changed";
    });
}

TEST_P(ChannelReplacement, NilChannelRaises)
{
    forEachHost(artefact(), [](TestHost& host) {
        for (const Member& member : members)
        {
            // The channel picture is looked at first.
            for (const Picture& self : {host.newPicture(3, 3), Picture()})
                expectNilObjectException(host.call(self, member.method, {nullptr}),
                                         "The channel picture is nil.");
            expectNil(host, Picture(), member.method, {host.newPicture(3, 3)});
        }
    });
}

TEST_P(ChannelReplacement, KeepsToItsLimits)
{
    for (const Member& member : members)
    {
        const SourceJob withItself = [&](TestHost& host, const Picture& source) {
            return host.call(source, member.method, {source});
        };
        expectSizeLimits(artefact(), withItself);
        expectCleanFailures(artefact(), withItself);
        expectCleanFailures(artefact(), [&](TestHost& host, const Picture& source) {
            return host.call(host.newPicture(2, 2), member.method, {source});
        });
        expectSameOnAllVersions(artefact(), withItself, [&](const reference::Picture& source) {
            return reference::replaceChannel(source, source, member.channel);
        });
    }
}

} // namespace
