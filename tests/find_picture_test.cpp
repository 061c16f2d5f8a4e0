#include "tests/reference/find_picture.h"
#include "tests/support/operation_checks.h"

#include <map>
#include <set>

namespace
{

using reference::Position;
using standin::Picture;
using standin::Storage;
using standin::Value;

constexpr std::uint32_t black = 0x000000;
constexpr std::uint32_t white = 0xFFFFFF;

/// A picture drawn with letters: '.' is black, '#' is white.
reference::Picture drawn(const std::vector<std::string>& rows)
{
    reference::Picture picture{static_cast<int>(rows.front().size()), static_cast<int>(rows.size())};
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            picture.at(x, y) = reference::pixelOf(
                rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] == '#' ? white : black);
    return picture;
}

std::string text(const reference::Picture& picture)
{
    std::string result;
    for (int y = 0; y < picture.height; ++y)
    {
        for (int x = 0; x < picture.width; ++x)
            result += picture.at(x, y).red == 0 ? '.' : picture.at(x, y).red == 255 ? '#' : '+';
        result += '\n';
    }
    return result;
}

std::string text(const std::optional<Position>& position)
{
    return position ? "(" + std::to_string(position->x) + ", " + std::to_string(position->y) + ")"
                    : "nothing";
}

class FindPicture : public ArtefactTest
{
protected:
    /// Where the plug-in finds it; failures must leave both variables 0.
    static std::optional<Position> find(TestHost& host, const Picture& self, const Picture& wanted)
    {
        Value x = 99;
        Value y = 98;
        const Value found = host.call(self, "FindPictureQVR", {wanted, byref(x), byref(y)});
        EXPECT_FALSE(found.exception().has_value());
        const Position position{x.integer(), y.integer()};
        if (found.boolean())
            return position;
        EXPECT_EQ(position, (Position{0, 0})) << "a search without result";
        return std::nullopt;
    }

    static void expectFound(const std::vector<std::string>& self, const std::vector<std::string>& wanted,
                            const std::optional<Position>& position, standin::Artefact artefact)
    {
        forEachHostAndLoop(artefact, [&](TestHost& host) {
            const reference::Picture selfPixels = drawn(self);
            const reference::Picture wantedPixels = drawn(wanted);
            EXPECT_EQ(text(reference::findPicture(selfPixels, wantedPixels)), text(position))
                << "the reference is wrong";
            for (const Storage storage : sourceStorages(host))
                EXPECT_EQ(text(find(host, upload(host, selfPixels, storage), upload(host, wantedPixels))),
                          text(position));
        });
    }
};
ON_EVERY_ARTEFACT(FindPicture);

TEST_P(FindPicture, OneVariableForBothPlacesGetsTheRow)
{
    forEachHost(artefact(), [](TestHost& host) {
        const Picture self = upload(host, drawn({".....", "...#.", "....."}));
        const Picture wanted = upload(host, drawn({"#"}));
        Value place = 99;
        EXPECT_TRUE(host.call(self, "FindPictureQVR", {wanted, byref(place), byref(place)}).boolean());
        EXPECT_EQ(place.integer(), 1);
        place = 99;
        EXPECT_FALSE(host.call(wanted, "FindPictureQVR", {self, byref(place), byref(place)}).boolean());
        EXPECT_EQ(place.integer(), 0);
    });
}

TEST_P(FindPicture, APictureIsAtTheStartOfItself)
{
    forEachHostAndLoop(artefact(), [](TestHost& host) {
        Random random{9};
        for (const Storage storage : sourceStorages(host))
            for (const int width : {1, 4, 8, 9, 33})
            {
                const Picture self = upload(host, randomPicture(random, width, 3, Palette::Few), storage);
                const auto before = self.rgba();
                EXPECT_EQ(text(find(host, self, self)), text(Position{0, 0})) << nameOf(storage);
                EXPECT_TRUE(before == self.rgba());
                host.expectBalanced("after a search in itself");
            }
    });
}

TEST_P(FindPicture, FailedCandidatesLeaveTheirRowsBehind)
{
    expectFound({"....", ".##.", "####"}, {"..", "##"}, Position{2, 0}, artefact());
    expectFound({"....", "..#.", "....", "...."}, {"..", ".#"}, Position{1, 0}, artefact());
}

TEST_P(FindPicture, KnownPlaces)
{
    // The whole picture, the first pixel of a colour, the edges, and the first of two.
    expectFound({"#.#", ".#."}, {"#.#", ".#."}, Position{0, 0}, artefact());
    expectFound({"....", "..##", "#..."}, {"#"}, Position{2, 1}, artefact());
    expectFound({"....", "....", "..##", "..##"}, {"##", "##"}, Position{2, 2}, artefact());
    expectFound({"...#", "...#", "...#"}, {"#", "#", "#"}, Position{3, 0}, artefact());
    expectFound({"....", "....", "####"}, {"####"}, Position{0, 2}, artefact());
    expectFound({"........", "........", ".....#..", ".#......"}, {"#"}, Position{5, 2}, artefact());
    expectFound({"....", "....", "...."}, {"#"}, std::nullopt, artefact());
    // Too tall, too wide, both.
    expectFound({"..", ".."}, {".", ".", "."}, std::nullopt, artefact());
    expectFound({"..", ".."}, {"..."}, std::nullopt, artefact());
    expectFound({"..", ".."}, {"...", "...", "..."}, std::nullopt, artefact());
    expectFound({"."}, {"."}, Position{0, 0}, artefact());
    expectFound({"."}, {"#"}, std::nullopt, artefact());
}

TEST_P(FindPicture, FirstOfTwoWins)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{60};
        const reference::Picture wanted = randomPicture(random, 2, 2);
        reference::Picture self{9, 7, reference::pixelOf(0x010203)};
        for (const Position& at : {Position{5, 2}, Position{1, 3}})
            for (int y = 0; y < 2; ++y)
                for (int x = 0; x < 2; ++x)
                    self.at(at.x + x, at.y + y) = wanted.at(x, y);
        EXPECT_EQ(find(host, upload(host, self), upload(host, wanted)), (Position{5, 2}));
    });
}

TEST_P(FindPicture, AlphaDoesNotCount)
{
    forEachHost(artefact(), [](TestHost& host) {
        Random random{61};
        for (const Storage storage : lockableStorages(host))
        {
            const reference::Picture pixels = randomPicture(random, 7, 5);
            reference::Picture other = pixels;
            for (reference::Pixel& pixel : other.pixels)
                pixel.alpha ^= 0xA5;
            EXPECT_EQ(find(host, upload(host, pixels, storage), upload(host, other)), (Position{0, 0}));
            // Every bit of the three channels does.
            for (int bit = 0; bit < 24; ++bit)
            {
                const reference::Pixel& last = pixels.at(6, 4);
                other.at(6, 4) = reference::pixelOf(reference::colourOf(last) ^ 1U << bit);
                EXPECT_EQ(find(host, upload(host, pixels, storage), upload(host, other)), std::nullopt);
            }
        }
    });
}

TEST_P(FindPicture, EqualsTheReferenceOnFewColours)
{
    // Few colours make many candidates that fail late, and those decide about everything after them.
    constexpr int searches = 6000;
    int misled = 0;
    int found = 0;
    std::uint32_t seed = 62;
    forEachHostAndLoop(artefact(), [&](TestHost& host) {
        Random random{++seed};
        std::map<std::pair<int, int>, Picture> selves;
        std::map<std::pair<int, int>, Picture> others;
        const auto hostPicture = [&](auto& pictures, const reference::Picture& pixels) -> Picture& {
            Picture& picture = pictures[{pixels.width, pixels.height}];
            if (picture.isNil())
                picture = host.newPicture(pixels.width, pixels.height);
            std::vector<std::uint8_t> bytes;
            for (const reference::Pixel& pixel : pixels.pixels)
                bytes.insert(bytes.end(), {pixel.red, pixel.green, pixel.blue});
            picture.setRgb(bytes);
            return picture;
        };
        for (int i = 0; i < searches; ++i)
        {
            const int rarity = random.between(2, 5);
            const auto pixels = [&](int width, int height) {
                reference::Picture picture{width, height};
                for (reference::Pixel& pixel : picture.pixels)
                    pixel = reference::pixelOf(random.onceIn(rarity) ? white : black);
                return picture;
            };
            const reference::Picture self = pixels(random.between(1, 12), random.between(1, 12));
            reference::Picture wanted = pixels(random.between(1, 4), random.between(1, 4));
            if (random.onceIn(2) && wanted.width <= self.width && wanted.height <= self.height)
            {
                const int left = random.between(0, self.width - wanted.width);
                const int top = random.between(0, self.height - wanted.height);
                for (int y = 0; y < wanted.height; ++y)
                    for (int x = 0; x < wanted.width; ++x)
                        wanted.at(x, y) = self.at(left + x, top + y);
            }
            const auto expected = reference::findPicture(self, wanted);
            misled += expected != reference::findPictureExhaustively(self, wanted);
            found += expected.has_value();
            ASSERT_EQ(text(find(host, hostPicture(selves, self), hostPicture(others, wanted))),
                      text(expected))
                << "search in\n"
                << text(self) << "for\n"
                << text(wanted);
        }
    });
    EXPECT_GT(found, searches) << "the pictures are too hard to find";
    EXPECT_GT(misled, searches / 10) << "the pictures are too easy to find";
}

TEST_P(FindPicture, EqualsTheReferenceOnLargerPictures)
{
    std::uint32_t seed = 70;
    forEachHostAndLoop(artefact(), [&](TestHost& host) {
        Random random{++seed};
        for (int i = 0; i < affordable(60); ++i)
        {
            // Mostly blank, with some dots.
            reference::Picture self{random.between(20, 150), random.between(20, 90)};
            for (int dots = random.between(0, 12); dots > 0; --dots)
                self.at(random.between(0, self.width - 1), random.between(0, self.height - 1)) =
                    reference::pixelOf(random.onceIn(2) ? white : 0x7F7F7F);
            reference::Picture wanted{random.between(1, 40), random.between(1, 20)};
            if (random.onceIn(2))
                wanted.at(random.between(0, wanted.width - 1), random.between(0, wanted.height - 1)) =
                    reference::pixelOf(white);
            else
            {
                const int left = random.between(0, self.width - 1);
                const int top = random.between(0, self.height - 1);
                wanted = reference::Picture{random.between(1, self.width - left),
                                            random.between(1, self.height - top)};
                for (int y = 0; y < wanted.height; ++y)
                    for (int x = 0; x < wanted.width; ++x)
                        wanted.at(x, y) = self.at(left + x, top + y);
            }
            const std::vector<Storage> storages = lockableStorages(host);
            const Picture selfPicture = upload(host, self, random.oneOf(storages));
            const Picture wantedPicture = upload(host, wanted, random.oneOf(storages));
            const auto before = selfPicture.rgba();
            ASSERT_EQ(text(find(host, selfPicture, wantedPicture)),
                      text(reference::findPicture(self, wanted)))
                << self.width << " x " << self.height << " for " << wanted.width << " x " << wanted.height;
            EXPECT_TRUE(before == selfPicture.rgba()) << "a picture was changed";
        }
    });
}

TEST_P(FindPicture, RandomPiecesOfPhotographLikePictures)
{
    forEachSource(artefact(), [](TestHost& host, const Picture& source, Random& random) {
        const reference::Picture self = download(source);
        const int width = random.between(1, self.width);
        const int height = random.between(1, self.height);
        const int left = random.between(0, self.width - width);
        const int top = random.between(0, self.height - height);
        reference::Picture wanted{width, height};
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                wanted.at(x, y) = self.at(left + x, top + y);
        EXPECT_EQ(text(find(host, source, upload(host, wanted))), text(reference::findPicture(self, wanted)));
        EXPECT_EQ(find(host, source, source), (Position{0, 0}));
    });
}

TEST_P(FindPicture, NothingToSearch)
{
    forEachHost(artefact(), [](TestHost& host) {
        const Picture any = host.newPicture(3, 3);
        Picture unopened = host.newPicture(3, 3);
        unopened.quirks() = broken(host);
        for (const Picture& unfit :
             {Picture(), unopened, host.newPicture(0, 3), host.newPicture(3, 0), host.newPicture(0, 0)})
        {
            EXPECT_EQ(find(host, any, unfit), std::nullopt);
            EXPECT_EQ(find(host, unfit, any), std::nullopt);
            EXPECT_EQ(find(host, unfit, unfit), std::nullopt);
            host.expectBalanced("after a search without pictures");
        }
        // Sizes are not limited here.
        Picture wide = upload(host, reference::Picture{40000, 1});
        wide.setPixel(39999, 0, {1, 2, 3, 0});
        EXPECT_EQ(find(host, wide, upload(host, reference::Picture{1, 1, {1, 2, 3}})), (Position{39999, 0}));
    });
}

TEST_P(FindPicture, SameOnAllVersions)
{
    forEachHostVersion(artefact(), [](TestHost& host) {
        EXPECT_EQ(
            find(host, upload(host, drawn({"....", ".##.", "####"})), upload(host, drawn({"..", "##"}))),
            (Position{2, 0}));
    });
}

TEST_P(FindPicture, SurvivesFailingCalls)
{
    const TortureJob job = [](TestHost& host, std::vector<Picture>& sources) {
        Value x = 9;
        Value y = 9;
        const Value found = host.call(sources[0], "FindPictureQVR", {sources[1], byref(x), byref(y)});
        if (!found.boolean())
            EXPECT_TRUE(x.integer() == 0 && y.integer() == 0);
        return found;
    };
    torture(artefact(), {drawn({"....", ".##.", "####"}), drawn({"..", "##"})}, job, {.cleanResult = false});
}

} // namespace
