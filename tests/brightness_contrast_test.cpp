#include "tests/reference/brightness_contrast.h"

#include "tests/support/operation_checks.h"

#include <cmath>
#include <functional>
#include <limits>

namespace
{

using reference::allChannels;
using reference::Channels;
using reference::Picture;
using reference::Pixel;
using standin::Arguments;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

class BrightnessContrast : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(BrightnessContrast);

/// A call and what it gives.
struct Call
{
    std::string method;
    Arguments arguments;
    std::function<Picture(const Picture&)> wanted;
};

Arguments argumentsOf(std::initializer_list<Channels> values)
{
    Arguments arguments;
    for (const Channels& channels : values)
        arguments.insert(arguments.end(), {channels.red, channels.green, channels.blue});
    return arguments;
}

/// Every overload, all of the parameters from `next`.
std::vector<Call> everyCall(const std::function<double()>& next)
{
    const double k = next();
    const double m = next();
    const Channels ks{next(), next(), next()};
    const Channels ms{next(), next(), next()};
    return {
        {"ChangeContrastBrightnessLinearQVR", argumentsOf({ks, ms}),
         [=](const Picture& p) { return contrastLinearBrightness(p, ks, ms); }},
        {"ChangeContrastBrightnessLinearQVR",
         {k, m},
         [=](const Picture& p) { return contrastLinearBrightness(p, allChannels(k), allChannels(m)); }},
        {"ChangeContrastBrightnessAbsoluteQVR", argumentsOf({ks, ms}),
         [=](const Picture& p) { return contrastAbsoluteBrightness(p, ks, ms); }},
        {"ChangeContrastBrightnessAbsoluteQVR",
         {k, m},
         [=](const Picture& p) { return contrastAbsoluteBrightness(p, allChannels(k), allChannels(m)); }},
        {"ChangeBrightnessAbsoluteQVR", argumentsOf({ms}),
         [=](const Picture& p) { return absoluteBrightness(p, ms); }},
        {"ChangeBrightnessAbsoluteQVR",
         {m},
         [=](const Picture& p) { return absoluteBrightness(p, allChannels(m)); }},
        {"ChangeBrightnessLinearQVR", argumentsOf({ms}),
         [=](const Picture& p) { return linearBrightness(p, ms); }},
        {"ChangeBrightnessLinearQVR",
         {m},
         [=](const Picture& p) { return linearBrightness(p, allChannels(m)); }},
        {"ChangeContrastQVR", argumentsOf({ks}), [=](const Picture& p) { return contrast(p, ks); }},
        {"ChangeContrastQVR", {k}, [=](const Picture& p) { return contrast(p, allChannels(k)); }},
        {"ChangeCustomQVR", {k, m}, [=](const Picture& p) { return custom(p, k, m); }},
    };
}

/// So many rows of 256 pixels are enough for the plug-in to look for a faster way.
constexpr int manyRows = 16;

/// All 256 values of a channel, other ones in each of the three.
Picture everyValue(int rows)
{
    Picture picture(256, rows);
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < 256; ++x)
            picture.at(x, y) = {static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(255 - x),
                                static_cast<std::uint8_t>(x * 7 + y), static_cast<std::uint8_t>(x)};
    return picture;
}

/// What one call makes of one pixel, on every host.
void expectPixel(standin::Artefact artefact, Pixel source, const std::string& method,
                 const Arguments& arguments, Pixel wanted, SourceLine line = SourceLine::here())
{
    const auto test = [&](TestHost& host) {
        expectCall(Picture(3, 2, wanted), host, upload(host, Picture(3, 2, source)), method, arguments,
                   Alpha::Opaque, line);
    };
    forEachHost(artefact, test, line);
}

TEST_P(BrightnessContrast, NeutralParametersCopyTheColours)
{
    const Picture copy = reference::opaque(everyValue(1));
    forEachHost(artefact(), [&](TestHost& host) {
        const standin::Picture photo = upload(host, everyValue(1));
        expectCall(copy, host, photo, "ChangeContrastQVR", {0.0});
        expectCall(copy, host, photo, "ChangeBrightnessAbsoluteQVR", {0.0});
        expectCall(copy, host, photo, "ChangeBrightnessLinearQVR", {0.0});
        expectCall(copy, host, photo, "ChangeCustomQVR", {1.0, 0.0});
        expectCall(copy, host, photo, "ChangeContrastBrightnessLinearQVR", {0.0, 0.0});
        expectCall(copy, host, photo, "ChangeContrastBrightnessAbsoluteQVR", {0.0, 0.0});
    });
}

TEST_P(BrightnessContrast, ContrastTurnsAround127)
{
    expectPixel(artefact(), {200, 100, 0}, "ChangeContrastQVR", {-1.0}, {127, 127, 127});
    expectPixel(artefact(), {200, 100, 0}, "ChangeContrastQVR", {1.0}, {255, 73, 0});
    expectPixel(artefact(), {200, 100, 0}, "ChangeContrastQVR", {1.0, 0.0, -1.0}, {255, 100, 127});
}

TEST_P(BrightnessContrast, AbsoluteBrightnessIsAddedAndTruncated)
{
    expectPixel(artefact(), {100, 100, 100}, "ChangeBrightnessAbsoluteQVR", {10.9}, {110, 110, 110});
    expectPixel(artefact(), {100, 100, 100}, "ChangeBrightnessAbsoluteQVR", {-0.5}, {99, 99, 99});
    expectPixel(artefact(), {0, 100, 250}, "ChangeBrightnessAbsoluteQVR", {-0.5, 0.0, 10.0}, {0, 100, 255});
}

TEST_P(BrightnessContrast, LinearBrightnessRunsToWhiteAndBlackAndWrapsBeyond)
{
    const Pixel some{3, 100, 255};
    expectPixel(artefact(), some, "ChangeBrightnessLinearQVR", {255.0}, {255, 255, 255});
    expectPixel(artefact(), some, "ChangeBrightnessLinearQVR", {-255.0}, {0, 0, 0});
    expectPixel(artefact(), {255, 255, 255}, "ChangeBrightnessLinearQVR", {-300.0}, {211, 211, 211});
    expectPixel(artefact(), {0, 0, 0}, "ChangeBrightnessLinearQVR", {300.0}, {44, 44, 44});
}

TEST_P(BrightnessContrast, CombinedFormsClamp)
{
    const Pixel some{3, 100, 255};
    expectPixel(artefact(), {127, 200, 255}, "ChangeContrastBrightnessLinearQVR", {1.0, 255.0},
                {255, 255, 255});
    expectPixel(artefact(), some, "ChangeContrastBrightnessAbsoluteQVR", {0.0, 300.0}, {255, 255, 255});
    expectPixel(artefact(), some, "ChangeContrastBrightnessLinearQVR", {0.0, -300.0}, {0, 0, 0});
}

TEST_P(BrightnessContrast, NotANumberEndsAsZeroInItsChannelOnly)
{
    expectPixel(artefact(), {1, 2, 3}, "ChangeBrightnessAbsoluteQVR", {notANumber, 0.0, 1.0}, {0, 2, 4});
    expectPixel(artefact(), {1, 2, 3}, "ChangeBrightnessLinearQVR", {0.0, notANumber, 0.0}, {1, 0, 3});
    expectPixel(artefact(), {1, 2, 3}, "ChangeContrastQVR", {0.0, 0.0, notANumber}, {1, 2, 0});
    expectPixel(artefact(), {1, 2, 3}, "ChangeCustomQVR", {notANumber, 0.0}, {0, 0, 0});
    expectPixel(artefact(), {1, 2, 3}, "ChangeContrastBrightnessLinearQVR", {0.0, notANumber}, {0, 0, 0});
}

TEST_P(BrightnessContrast, WhatDoesNotFitAnIntegerEndsAsZero)
{
    const Pixel some{200, 100, 1};
    for (const double large : {2147483648.0, 1e300, infinity, -infinity, -2147483904.0, -1e300})
    {
        expectPixel(artefact(), some, "ChangeBrightnessAbsoluteQVR", {large}, {0, 0, 0});
        expectPixel(artefact(), some, "ChangeCustomQVR", {1.0, large}, {0, 0, 0});
    }
    // The largest integer fits before the channel is added, and beyond with it.
    expectPixel(artefact(), {0, 1, 200}, "ChangeBrightnessAbsoluteQVR", {2147483647.0}, {255, 0, 0});
    expectPixel(artefact(), {0, 1, 200}, "ChangeBrightnessLinearQVR", {infinity}, {0, 0, 0});
}

TEST_P(BrightnessContrast, OneValueIsThreeEqualValues)
{
    Random random{41};
    forEachHost(artefact(), [&](TestHost& host) {
        const standin::Picture photo = upload(host, randomPicture(random, 33, 3));
        for (int i = 0; i < 20; ++i)
        {
            const double k = random.parameter();
            const double m = random.parameter();
            const auto same = [&](const std::string& method, const Arguments& one, const Arguments& three) {
                expectPicture(download(host.call(photo, method, three).picture()),
                              host.call(photo, method, one).picture(), callText(method, one), Alpha::Exact);
            };
            same("ChangeContrastQVR", {k}, {k, k, k});
            same("ChangeBrightnessAbsoluteQVR", {m}, {m, m, m});
            same("ChangeBrightnessLinearQVR", {m}, {m, m, m});
            same("ChangeContrastBrightnessLinearQVR", {k, m}, {k, k, k, m, m, m});
            same("ChangeContrastBrightnessAbsoluteQVR", {k, m}, {k, k, k, m, m, m});
        }
    });
}

TEST_P(BrightnessContrast, EqualsTheReferenceForEveryChannelValue)
{
    Random random{42};
    forEachHostAndLoop(artefact(), [&](TestHost& host) {
        for (const int rows : {1, manyRows})
        {
            const standin::Picture photo = upload(host, everyValue(rows));
            const Picture source = download(photo);
            for (int i = 0; i < affordable(20); ++i)
                for (const Call& call : everyCall([&] { return random.parameter(); }))
                    expectCall(call.wanted(source), host, photo, call.method, call.arguments);
        }
    });
}

TEST_P(BrightnessContrast, EqualsTheReferenceInEverySizeAndStorage)
{
    forEachSource(artefact(), [](TestHost& host, const standin::Picture& photo, Random& random) {
        const Picture source = download(photo);
        for (const Call& call : everyCall([&] { return random.parameter(); }))
            expectCall(call.wanted(source), host, photo, call.method, call.arguments);
    });
}

TEST_P(BrightnessContrast, LargePicturesAreRightToo)
{
    Random random{44};
    const Picture content = randomPicture(random, affordable(1201), affordable(900));
    TestHost host{hostSetup(artefact())};
    const standin::Picture photo = upload(host, content);
    for (const Call& call : everyCall([&] { return std::abs(random.parameter()); }))
        expectCall(call.wanted(content), host, photo, call.method, call.arguments);
}

TEST_P(BrightnessContrast, KeepsToItsLimits)
{
    for (const Call& call : everyCall([] { return 0.5; }))
        expectLimitsOfMethod(artefact(), call.method, call.arguments);
}

} // namespace
