#include "tests/reference/saturation.h"

#include "tests/support/operation_checks.h"

namespace
{

using reference::Picture;
using reference::Pixel;

class Saturation : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(Saturation);

TEST_P(Saturation, PushesChannelsFromTheirGrey)
{
    const Pixel some{200, 100, 50, 3};
    const std::pair<int, Pixel> amounts[] = {
        {0, {200, 100, 50}}, {-255, {112, 112, 112}}, {255, {255, 88, 0}}, {-128, {155, 107, 82}}};
    forEachHost(artefact(), [&](TestHost& host) {
        for (const auto& [amount, wanted] : amounts)
            expectCall(Picture(3, 2, wanted), host, upload(host, Picture(3, 2, some)), "ChangeSaturationQVR",
                       {amount});
    });
}

TEST_P(Saturation, GreysStayWhateverTheAmount)
{
    Picture greys(256, 1);
    for (int x = 0; x < 256; ++x)
    {
        const auto grey = static_cast<std::uint8_t>(x);
        greys.at(x, 0) = {grey, grey, grey};
    }
    forEachHost(artefact(), [&](TestHost& host) {
        const standin::Picture photo = upload(host, greys);
        for (const int amount : {0, 1, -1, -255, 255, -256, -1000, 5'000'000, 50'000'000, most, least})
            expectCall(greys, host, photo, "ChangeSaturationQVR", {amount});
    });
}

TEST_P(Saturation, EqualsTheReferenceEverywhere)
{
    const std::vector<int> special{0,       1,          -1,         255,       -255,       -256,
                                   -510,    8'000'000,  8'421'505,  9'000'000, -9'000'000, 1 << 24,
                                   1 << 30, most - 255, most - 254, most,      least,      least + 1};
    forEachSource(artefact(), [&](TestHost& host, const standin::Picture& photo, Random& random) {
        const Picture source = download(photo);
        for (const int amount :
             {random.oneOf(special), random.between(-600, 600), random.between(least, most)})
            expectCall(saturation(source, amount), host, photo, "ChangeSaturationQVR", {amount});
    });
}

/// Every difference of a channel from the grey meets many factors.
TEST_P(Saturation, EqualsTheReferenceForManyAmounts)
{
    Random random{52};
    const Picture content = randomPicture(random, 301, 11, Palette::Extremes);
    forEachHostAndLoop(artefact(), [&](TestHost& host) {
        const standin::Picture photo = upload(host, content);
        for (int amount = -520; amount <= 520; amount += 7)
            expectCall(saturation(content, amount), host, photo, "ChangeSaturationQVR", {amount});
        // Factors up to 65536 are multiplied in another way than the others.
        for (const int factor : {65536, 65537, -65536, -65537})
            expectCall(saturation(content, factor - 255), host, photo, "ChangeSaturationQVR", {factor - 255});
        for (int i = 0; i < affordable(100); ++i)
        {
            const int amount = i % 2 == 0 ? random.between(least, most) : random.between(-66000, 66000);
            expectCall(saturation(content, amount), host, photo, "ChangeSaturationQVR", {amount});
        }
    });
}

TEST_P(Saturation, KeepsToItsLimits)
{
    expectLimitsOfMethod(artefact(), "ChangeSaturationQVR", {10});
}

} // namespace
