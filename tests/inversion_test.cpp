#include "tests/reference/inversion.h"

#include "tests/support/operation_checks.h"

namespace
{

using reference::Picture;
using reference::Rectangle;
using standin::Arguments;

class Inversion : public ArtefactTest
{
};
ON_EVERY_ARTEFACT(Inversion);

Arguments argumentsOf(const Rectangle& rectangle)
{
    return {rectangle.left, rectangle.top, rectangle.width, rectangle.height};
}

/// What both methods give for a rectangle.
void expectRectangle(TestHost& host, const standin::Picture& photo, const Rectangle& rectangle)
{
    const Picture source = download(photo);
    const int sourceBytes = bytesRead(host, photo);
    const int resultBytes = bytesPerPixel(host.newStorage());
    expectCall(invert(source, rectangle, sourceBytes, resultBytes), host, photo, "InvertQVR",
               argumentsOf(rectangle));
    expectCall(invertGray(source, rectangle, sourceBytes, resultBytes), host, photo, "InvertGrayQVR",
               argumentsOf(rectangle));
}

TEST_P(Inversion, InvertsEveryChannelAndIsOpaque)
{
    forEachHost(artefact(), [](TestHost& host) {
        const standin::Picture photo = upload(host, Picture(2, 2, {10, 20, 30, 7}));
        expectCall(Picture(2, 2, {245, 235, 225}), host, photo, "InvertQVR");
    });
}

TEST_P(Inversion, GreyInversionLeavesColoursAlone)
{
    forEachHost(artefact(), [](TestHost& host) {
        const standin::Picture photo =
            upload(host, pictureOf({{{100, 100, 100}, {100, 100, 101}, {255, 0, 0}}}));
        expectCall(pictureOf({{{155, 155, 155}, {100, 100, 101}, {255, 0, 0}}}), host, photo,
                   "InvertGrayQVR");
    });
}

TEST_P(Inversion, SizesOfZeroMeanEverythingOrNothing)
{
    forEachHost(artefact(), [](TestHost& host) {
        const standin::Picture photo = upload(host, Picture(3, 2, {100, 100, 100}));
        const Picture all(3, 2, {155, 155, 155});
        const Picture nothing(3, 2, reference::untouched);
        expectCall(all, host, photo, "InvertQVR", {0, 0, 0, 0});
        expectCall(all, host, photo, "InvertQVR", {0, 0, -7, -9});
        expectCall(nothing, host, photo, "InvertGrayQVR", {0, 0, 0, 0});
        expectCall(nothing, host, photo, "InvertGrayQVR", {0, 0, 0, -1});
        expectCall(nothing, host, photo, "InvertGrayQVR", {0, 0, -1, 0});
        expectCall(all, host, photo, "InvertGrayQVR", {0, 0, -1, -1});
    });
}

TEST_P(Inversion, RectanglesAreCutAtTheEdges)
{
    Random random{31};
    const Picture content = randomPicture(random, 11, 5, Palette::Greys);
    forEachHost(artefact(), [&](TestHost& host) {
        for (const Rectangle& rectangle :
             {Rectangle{3, 2, 100, 100}, Rectangle{-3, -2, 5, 4}, Rectangle{-3, -2, 3, 2},
              Rectangle{2, 1, 3, 2}, Rectangle{11, 0, 5, 5}, Rectangle{0, 5, 5, 5}, Rectangle{4, 2, 0, 0},
              Rectangle{1, 1, most, most}, Rectangle{most, 0, most, 1}, Rectangle{0, most, 1, most},
              Rectangle{least, least, most, most}, Rectangle{least, 0, least, least},
              Rectangle{-5, -5, -1, -1}})
            for (const standin::Storage storage : sourceStorages(host))
                expectRectangle(host, upload(host, content, storage), rectangle);
    });
}

TEST_P(Inversion, TwiceGivesBackTheColours)
{
    Random random{32};
    forEachHost(artefact(), [&](TestHost& host) {
        const standin::Picture photo = upload(host, randomPicture(random, 37, 9));
        const standin::Picture once = host.call(photo, "InvertQVR").picture();
        const standin::Picture twice = host.call(once, "InvertQVR").picture();
        expectPicture(download(photo), twice, "InvertQVR twice", Alpha::Ignored);
    });
}

/// With three bytes a pixel, a rectangle starts four bytes a pixel into its rows and stops at their ends.
TEST_P(Inversion, RectanglesOf24BitPicturesStartFourBytesAPixelIn)
{
    const HostSetup setup = hostSetup(artefact()).newPictures(standin::Storage::GWorld24);
    TestHost host{setup};
    const standin::Picture photo = upload(host, pictureOf({{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}}}),
                                          standin::Storage::GWorld24);
    constexpr std::uint8_t fill = reference::untouchedByte;
    expectCall(pictureOf({{{fill, fill, fill}, {fill, 250, 249}, {248, 247, 246}, {245, fill, fill}}}), host,
               photo, "InvertQVR", {1, 0, 2, 1});
    // From the third column on two whole pixels would fit the rectangle, and one fits the row.
    expectCall(pictureOf({{{fill, fill, fill}, {fill, fill, fill}, {fill, fill, 246}, {245, 244, fill}}}),
               host, photo, "InvertQVR", {2, 0, 2, 1});
    expectCall(Picture(4, 1, reference::untouched), host, photo, "InvertQVR", {3, 0, 1, 1});
}

TEST_P(Inversion, EqualsTheReferenceEverywhere)
{
    forEachSource(artefact(), [](TestHost& host, const standin::Picture& photo, Random& random) {
        expectRectangle(host, photo, {});
        for (int i = 0; i < 3; ++i)
            expectRectangle(host, photo,
                            {random.coordinate(photo.width()), random.coordinate(photo.height()),
                             random.coordinate(photo.width()), random.coordinate(photo.height())});
    });
}

/// Large enough for loops that write past the caches.
TEST_P(Inversion, LargePicturesAreRightToo)
{
    Random random{34};
    const Picture content = randomPicture(random, affordable(1501), 1400, Palette::Few);
    for (const int lanes : {4, 8})
        for (const standin::Kind kind : {standin::Kind::Desktop, standin::Kind::Console})
        {
            TestHost host{hostSetup(artefact(), kind).lanes(lanes)};
            const standin::Picture photo = upload(host, content);
            expectCall(reference::invert(content, {}), host, photo, "InvertQVR");
        }
}

TEST_P(Inversion, KeepsToItsLimits)
{
    for (const char* method : {"InvertQVR", "InvertGrayQVR"})
        for (const Arguments& arguments : {Arguments{}, Arguments{0, 0, 1, 1}})
            expectLimitsOfMethod(artefact(), method, arguments);
}

} // namespace
