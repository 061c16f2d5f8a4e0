#include "fuzz/truth.h"

#include "fuzz/expect.h"
#include "tests/reference/binary_string.h"
#include "tests/reference/brightness_contrast.h"
#include "tests/reference/channels.h"
#include "tests/reference/colour_search.h"
#include "tests/reference/colour_statistics.h"
#include "tests/reference/find_picture.h"
#include "tests/reference/inversion.h"
#include "tests/reference/lut3d.h"
#include "tests/reference/masks.h"
#include "tests/reference/regions.h"
#include "tests/reference/saturation.h"
#include "tests/reference/scrolling.h"
#include "tests/reference/sepia.h"
#include "tests/reference/tint.h"

#include <bit>
#include <cstring>
#include <map>

namespace fuzz
{

namespace
{

using reference::AlphaPlace;
using standin::Access;
using standin::Instance;
using standin::MemoryBlock;
using standin::Picture;
using standin::Storage;
using standin::Value;

constexpr int histogramSize = 1024;
constexpr int tableSize = 256;

/// What the plug-in sees of a picture.
struct Seen
{
    reference::Picture pixels;
    int bytes = 4;     ///< of a pixel
    bool copy = false; ///< drawn by the host, and opaque by that
    Storage storage;   ///< of the picture or its copy
};

/// Nothing for a picture that cannot be opened: nil, or no bitmap where only those are.
std::optional<Seen> seen(const standin::Host& host, const Picture& picture)
{
    if (picture.isNil())
        return std::nullopt;
    const bool copy = !locks(host, picture.storage());
    if (copy && host.options().storageOfNewPictures() == Storage::Bitmap)
        return std::nullopt;
    return Seen{reference::download(picture), bytesRead(host, picture.storage()), copy,
                copy ? host.options().storageOfNewPictures() : picture.storage()};
}

AlphaPlace alphaPlace(const Seen& source)
{
    if (source.copy || !traitsOf(source.storage).hasSpareByte)
        return AlphaPlace::Nowhere;
    return traitsOf(source.storage).access == Access::Bitmap ? AlphaPlace::FourthByte : AlphaPlace::FirstByte;
}

/// A result without its reference can be compared by its text; every NaN is the same.
void expectSame(const Value& wanted, const Value& got, const std::string& what)
{
    expect(wanted.describe() == got.describe(),
           what + " gave " + got.describe() + ", not " + wanted.describe());
}

void expectNothing(const Value& result, const std::string& what)
{
    const auto* picture = std::get_if<Picture>(&result.held());
    const auto* string = std::get_if<standin::String>(&result.held());
    expect(picture != nullptr  ? picture->isNil()
           : string != nullptr ? string->isNil()
                               : result.isNil(),
           what + " gave " + result.describe() + ", not nil");
}

Check gives(const Call& call, const Value& wanted)
{
    return [wanted, what = call.method.text](const Value& result) {
        expect(!result.exception().has_value(), what + " raised an exception");
        expectSame(wanted, result, what);
    };
}

Check givesPicture(const Call& call, std::optional<reference::Picture> wanted)
{
    return [wanted = std::move(wanted), what = call.method.text](const Value& result) {
        expect(!result.exception().has_value(), what + " raised an exception");
        if (wanted)
            expectPicture(*wanted, result.picture(), what);
        else
            expectNothing(result, what);
    };
}

Check raises(const Call& call, const std::string& message)
{
    return [message, what = call.method.text](const Value& result) {
        expectNothing(result, what);
        expect(result.exception() && result.exception()->className == "NilObjectException" &&
                   result.exception()->message == message,
               what + " did not raise \"" + message + "\"");
    };
}

// Arguments

/// What a variable holds, the value itself, or the parameter's default.
Value argument(const Call& call, std::size_t index)
{
    if (index >= call.arguments.size())
        return std::visit([](auto content) { return Value(content); },
                          *call.method.declaration.parameters.at(index).defaultValue);
    const Value& value = call.arguments.at(index);
    const auto* variable = std::get_if<standin::VariableArgument>(&value.held());
    return variable == nullptr ? value : *variable->variable;
}

Picture pictureAt(const Call& call, std::size_t index)
{
    return argument(call, index).picture();
}

std::int32_t integerAt(const Call& call, std::size_t index)
{
    return argument(call, index).integer();
}

double realAt(const Call& call, std::size_t index)
{
    return argument(call, index).number();
}

reference::Channels channelsAt(const Call& call, std::size_t index)
{
    return {realAt(call, index), realAt(call, index + 1), realAt(call, index + 2)};
}

/// The rectangle that begins at an argument, or the whole picture where the call has none.
reference::Rectangle rectangleAt(const Call& call, std::size_t index)
{
    if (call.arguments.size() < index + 4)
        return {};
    return {integerAt(call, index), integerAt(call, index + 1), integerAt(call, index + 2),
            integerAt(call, index + 3)};
}

// Methods that make a picture of another

template <class Compute>
Check mapsSelf(const Call& call, Compute compute)
{
    const std::optional<Seen> self = seen(call.host, call.self);
    if (!self)
        return givesPicture(call, std::nullopt);
    return givesPicture(call, compute(*self));
}

/// A method of the tone family with one value for each channel, or one for all of them.
template <class Compute>
Check toneOf(const Call& call, std::size_t values, Compute compute)
{
    const bool threefold = call.arguments.size() == 3 * values;
    std::vector<reference::Channels> channels;
    for (std::size_t index = 0; index < values; ++index)
        channels.push_back(threefold ? channelsAt(call, 3 * index)
                                     : reference::allChannels(realAt(call, index)));
    return mapsSelf(call, [&](const Seen& self) { return compute(self.pixels, channels); });
}

using ToneOfTwo = reference::Picture (*)(const reference::Picture&, reference::Channels, reference::Channels);
using ToneOfOne = reference::Picture (*)(const reference::Picture&, reference::Channels);

template <ToneOfTwo compute>
Check tone(const Call& call)
{
    return toneOf(call, 2, [](const reference::Picture& pixels, const auto& values) {
        return compute(pixels, values[0], values[1]);
    });
}

template <ToneOfOne compute>
Check tone(const Call& call)
{
    return toneOf(call, 1, [](const reference::Picture& pixels, const auto& values) {
        return compute(pixels, values[0]);
    });
}

Check custom(const Call& call)
{
    return mapsSelf(call, [&](const Seen& self) {
        return reference::custom(self.pixels, realAt(call, 0), realAt(call, 1));
    });
}

using Inversion = reference::Picture (*)(const reference::Picture&, reference::Rectangle, int, int);

template <Inversion compute>
Check inversion(const Call& call)
{
    return mapsSelf(call, [&](const Seen& self) {
        return compute(self.pixels, rectangleAt(call, 0), self.bytes,
                       bytesPerPixel(call.host.options().storageOfNewPictures()));
    });
}

Check saturation(const Call& call)
{
    return mapsSelf(call,
                    [&](const Seen& self) { return reference::saturation(self.pixels, integerAt(call, 0)); });
}

Check rectangleMask(const Call& call)
{
    return mapsSelf(call, [&](const Seen& self) {
        return reference::colorRectangleMask(self.pixels, rectangleAt(call, 0), self.bytes);
    });
}

Check replaceColour(const Call& call)
{
    return mapsSelf(call, [&](const Seen& self) {
        return reference::replaceColor(self.pixels, argument(call, 0).colour(), argument(call, 1).colour());
    });
}

Check extractColour(const Call& call)
{
    return mapsSelf(call, [&](const Seen& self) {
        return reference::extractColor(self.pixels, argument(call, 0).colour(), argument(call, 1).colour(),
                                       argument(call, 2).colour());
    });
}

Check embeddedMask(const Call& call)
{
    return mapsSelf(call, [&](const Seen& self) {
        return reference::embeddedMask(self.pixels, alphaPlace(self), argument(call, 0).boolean());
    });
}

template <reference::Channel channel>
Check replaceChannel(const Call& call)
{
    if (pictureAt(call, 0).isNil())
        return raises(call, "The channel picture is nil.");
    const std::optional<Seen> source = seen(call.host, pictureAt(call, 0));
    const std::optional<Seen> self = seen(call.host, call.self);
    if (!self || !source || source->pixels.width < self->pixels.width ||
        source->pixels.height < self->pixels.height)
        return givesPicture(call, std::nullopt);
    return givesPicture(call, reference::replaceChannel(self->pixels, source->pixels, channel));
}

// Methods that tell something about a picture

Check colorness(const Call& call)
{
    const std::optional<Seen> self = seen(call.host, call.self);
    return gives(call, self ? reference::colorness(self->pixels, integerAt(call, 0)) : 0.0);
}

using RegionTest = bool (*)(const reference::Picture&, reference::Rectangle, int);

template <RegionTest test>
Check region(const Call& call)
{
    const std::optional<Seen> self = seen(call.host, call.self);
    return gives(call, self && test(self->pixels, rectangleAt(call, 0), self->bytes));
}

Check isGrey(const Call& call)
{
    const std::optional<Seen> self = seen(call.host, call.self);
    return gives(
        call, self && reference::isGray(self->pixels, integerAt(call, 0), rectangleAt(call, 1), self->bytes));
}

Check countColour(const Call& call)
{
    const std::optional<Seen> self = seen(call.host, call.self);
    return gives(call, self ? reference::countColor(self->pixels, argument(call, 0).colour()) : 0);
}

Check hasMask(const Call& call)
{
    return gives(call, !call.self.isNil() && !call.self.mask().isNil());
}

Check findPicture(const Call& call)
{
    const std::optional<Seen> self = seen(call.host, call.self);
    const std::optional<Seen> wanted = seen(call.host, pictureAt(call, 0));
    const std::optional<reference::Position> found =
        self && wanted ? reference::findPicture(self->pixels, wanted->pixels) : std::nullopt;
    const auto* x = std::get<standin::VariableArgument>(call.arguments.at(1).held()).variable;
    const auto* y = std::get<standin::VariableArgument>(call.arguments.at(2).held()).variable;
    return [found, x, y, check = gives(call, found.has_value())](const Value& result) {
        check(result);
        const reference::Position at = found.value_or(reference::Position());
        expect(y->integer() == at.y, "FindPictureQVR found another row");
        // One variable for both gets the row at last.
        expect(x == y || x->integer() == at.x, "FindPictureQVR found another column");
    };
}

// Blocks

std::uint32_t counterAt(const std::vector<std::uint8_t>& bytes, std::size_t level)
{
    std::uint32_t counter = 0;
    std::memcpy(&counter, bytes.data() + 4 * level, sizeof counter);
    return counter;
}

/// The variables may be one, and so may be the blocks in them.
Check countColours(const Call& call)
{
    const Value* variables[3];
    std::vector<std::uint8_t> wanted[3];
    bool longEnough = true;
    for (std::size_t i = 0; i < 3; ++i)
    {
        variables[i] = std::get<standin::VariableArgument>(call.arguments.at(i).held()).variable;
        const MemoryBlock block = variables[i]->memoryBlock();
        if (block.isNil())
            wanted[i].resize(histogramSize);
        else
            wanted[i].assign(block.bytes().begin(), block.bytes().end());
        longEnough &= wanted[i].size() >= histogramSize;
    }
    const auto isSame = [&](std::size_t i, std::size_t j) {
        return variables[i] == variables[j] || (!variables[i]->memoryBlock().isNil() &&
                                                variables[i]->memoryBlock() == variables[j]->memoryBlock());
    };

    const std::optional<Seen> self = seen(call.host, call.self);
    const bool counted = self && longEnough;
    reference::Histograms histograms;
    if (counted)
        reference::countColors(self->pixels, histograms);
    const reference::Histogram* const added[] = {&histograms.declaredRed, &histograms.declaredBlue,
                                                 &histograms.declaredGreen};
    for (std::size_t i = 0; counted && i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            for (std::size_t level = 0; isSame(i, j) && level < added[j]->size(); ++level)
            {
                const std::uint32_t counter = counterAt(wanted[i], level) + (*added[j])[level];
                std::memcpy(wanted[i].data() + 4 * level, &counter, sizeof counter);
            }
    const auto* count = std::get<standin::VariableArgument>(call.arguments.at(3).held()).variable;
    return [=, blocks = std::to_array(wanted), places = std::to_array(variables),
            wantedCount = counted ? histograms.count : -1](const Value& result) {
        expect(!result.exception().has_value(), "CountColorsQVR raised an exception");
        expect(count->integer() == wantedCount, "CountColorsQVR counted other pixels");
        for (std::size_t i = 0; i < 3; ++i)
        {
            const MemoryBlock got = places[i]->memoryBlock();
            expect(!got.isNil() &&
                       std::equal(blocks[i].begin(), blocks[i].end(), got.bytes().begin(), got.bytes().end()),
                   "CountColorsQVR left another histogram in block " + std::to_string(i));
        }
    };
}

Check transformColours(const Call& call)
{
    if (call.self.isNil())
        return raises(call, "picture is nil");
    MemoryBlock blocks[3];
    for (std::size_t i = 0; i < 3; ++i)
        blocks[i] = argument(call, i).memoryBlock();
    // Red, blue, green is the order of the parameters, red, green, blue that of the checks.
    const auto& [red, blue, green] = blocks;
    if (red.isNil())
        return raises(call, "red memoryblock is nil");
    if (green.isNil())
        return raises(call, "green memoryblock is nil");
    if (blue.isNil())
        return raises(call, "blue memoryblock is nil");
    const std::optional<Seen> self = seen(call.host, call.self);
    if (!self || red.size() < tableSize || green.size() < tableSize || blue.size() < tableSize)
        return givesPicture(call, std::nullopt);
    const auto table = [](const MemoryBlock& block) {
        reference::LevelTable levels{};
        std::copy_n(block.data(), levels.size(), levels.begin());
        return levels;
    };
    const reference::Picture mapped =
        reference::transformColors(self->pixels, table(red), table(green), table(blue));

    const Picture target = call.arguments.size() > 3 ? pictureAt(call, 3) : Picture();
    if (target.isNil() || !locks(call.host, target.storage()) || target.width() < mapped.width ||
        target.height() < mapped.height)
        return [check = givesPicture(call, mapped), target](const Value& result) {
            check(result);
            expect(target.isNil() || !(result.picture() == target), "TransformColorsQVR gave its argument");
        };
    reference::Picture wanted = reference::download(target);
    for (int y = 0; y < mapped.height; ++y)
        for (int x = 0; x < mapped.width; ++x)
        {
            wanted.at(x, y) = mapped.at(x, y);
            wanted.at(x, y).alpha = traitsOf(target.storage()).opaqueAlpha;
        }
    return [wanted, target](const Value& result) {
        expect(result.picture() == target, "TransformColorsQVR did not give its argument");
        expect(reference::download(target) == wanted,
               "TransformColorsQVR wrote other pixels into its argument");
    };
}

// Scrolling

/// The pictures that a scroll may move, as they will be.
class Scroll
{
public:
    Scroll(const Call& scroll, bool wrapAround) : call(scroll), wrap(wrapAround)
    {
        for (const Picture& picture : {call.self, call.self.isNil() ? Picture() : call.self.mask()})
            if (!picture.isNil())
                states.insert_or_assign(picture.handle(), State{picture, reference::download(picture)});
    }

    bool vertically(const Picture& picture, int delta, bool withMask)
    {
        if (withMask && !maskOf(picture).isNil() && !vertically(maskOf(picture), delta, false))
            return false;
        return delta == 0 || move(picture, 0, delta);
    }

    void horizontally(const Picture& picture, int delta, bool withMask)
    {
        if (withMask && !maskOf(picture).isNil())
            horizontally(maskOf(picture), delta, false);
        if (delta != 0)
            move(picture, delta, 0);
    }

    void expectDone() const
    {
        for (const auto& [handle, state] : states)
            expect(reference::download(state.picture) == state.pixels,
                   call.method.text + " moved other pixels");
    }

private:
    struct State
    {
        Picture picture;
        reference::Picture pixels;
    };

    static Picture maskOf(const Picture& picture)
    {
        return picture.isNil() ? Picture() : picture.mask();
    }

    bool move(const Picture& picture, int dx, int dy)
    {
        if (picture.isNil())
            return false;
        reference::Picture& pixels = states.at(picture.handle()).pixels;
        if (!wrap)
        {
            if (traitsOf(picture.storage()).access != Access::GWorld)
                return false;
            pixels = shifted(pixels, dx, dy);
            return true;
        }
        if (!locks(call.host, picture.storage()))
            return false;
        pixels = reference::rotateVertically(reference::rotateHorizontally(pixels, dx), dy);
        return true;
    }

    /// As QuickDraw does: distances have 16 bits, and what is uncovered becomes white.
    static reference::Picture shifted(const reference::Picture& pixels, int deltaX, int deltaY)
    {
        const int dx = static_cast<std::int16_t>(deltaX);
        const int dy = static_cast<std::int16_t>(deltaY);
        reference::Picture result{pixels.width, pixels.height, {255, 255, 255, 255}};
        for (int y = 0; y < pixels.height; ++y)
            for (int x = 0; x < pixels.width; ++x)
                if (x - dx >= 0 && x - dx < pixels.width && y - dy >= 0 && y - dy < pixels.height)
                    result.at(x, y) = pixels.at(x - dx, y - dy);
        return result;
    }

    Call call;
    bool wrap;
    std::map<const void*, State> states;
};

Check givesAndMoves(const Call& call, bool wanted, const Scroll& scroll)
{
    return [check = gives(call, wanted), scroll](const Value& result) {
        check(result);
        scroll.expectDone();
    };
}

Check scrollVertically(const Call& call)
{
    Scroll scroll(call, argument(call, 1).boolean());
    const bool wanted = scroll.vertically(call.self, integerAt(call, 0), argument(call, 2).boolean());
    return givesAndMoves(call, wanted, scroll);
}

Check scrollHorizontally(const Call& call)
{
    Scroll scroll(call, argument(call, 1).boolean());
    scroll.horizontally(call.self, integerAt(call, 0), argument(call, 2).boolean());
    return givesAndMoves(call, true, scroll);
}

Check scrollBoth(const Call& call)
{
    Scroll scroll(call, argument(call, 2).boolean());
    const bool withMask = argument(call, 3).boolean();
    scroll.horizontally(call.self, integerAt(call, 0), withMask);
    const bool wanted = scroll.vertically(call.self, integerAt(call, 1), withMask);
    return givesAndMoves(call, wanted, scroll);
}

// Global methods

Check readString(const Call& call)
{
    const standin::String string = argument(call, 0).string();
    return givesPicture(call, string.isNil() ? std::nullopt : reference::fromBinaryString(string.bytes()));
}

Check writeString(const Call& call)
{
    const std::optional<Seen> source = seen(call.host, pictureAt(call, 0));
    if (!source)
        return [](const Value& result) { expectNothing(result, "PicturetoBinaryStringQVR"); };
    return [wanted = reference::toBinaryString(source->pixels)](const Value& result) {
        expect(!result.string().isNil() && result.string().bytes() == wanted,
               "PicturetoBinaryStringQVR gave another string");
    };
}

bool sameSize(const Seen& a, const Seen& b)
{
    return a.pixels.width == b.pixels.width && a.pixels.height == b.pixels.height;
}

Check combine(const Call& call)
{
    const std::optional<Seen> red = seen(call.host, pictureAt(call, 0));
    const std::optional<Seen> blue = seen(call.host, pictureAt(call, 1));
    const std::optional<Seen> green = seen(call.host, pictureAt(call, 2));
    if (!red || !blue || !green || !sameSize(*red, *blue) || !sameSize(*red, *green))
        return givesPicture(call, std::nullopt);
    return givesPicture(call, reference::combine(red->pixels, green->pixels, blue->pixels));
}

Check merge(const Call& call)
{
    const std::optional<Seen> first = seen(call.host, pictureAt(call, 0));
    const std::optional<Seen> second = seen(call.host, pictureAt(call, 1));
    if (!first || !second || !sameSize(*first, *second))
        return givesPicture(call, std::nullopt);
    return givesPicture(call, reference::merge(first->pixels, second->pixels));
}

Check tint(const Call& call)
{
    const std::optional<Seen> source = seen(call.host, pictureAt(call, 0));
    if (!source)
        return givesPicture(call, std::nullopt);
    return givesPicture(
        call, reference::tint(source->pixels, argument(call, 1).colour(), argument(call, 2).colour()));
}

using Truth = Check (*)(const Call&);

const std::map<std::string, Truth>& truths()
{
    using reference::Channel;
    static const std::map<std::string, Truth> table{
        {"ColornessQVR", colorness},
        {"ScrollVerticalQVR", scrollVertically},
        {"ScrollHorizontalQVR", scrollHorizontally},
        {"ScrollQVR", scrollBoth},
        {"HasMaskQVR", hasMask},
        {"ChangeContrastBrightnessAbsoluteQVR", tone<reference::contrastAbsoluteBrightness>},
        {"ChangeContrastBrightnessLinearQVR", tone<reference::contrastLinearBrightness>},
        {"ChangeBrightnessAbsoluteQVR", tone<reference::absoluteBrightness>},
        {"ChangeBrightnessLinearQVR", tone<reference::linearBrightness>},
        {"ChangeContrastQVR", tone<reference::contrast>},
        {"ChangeCustomQVR", custom},
        {"InvertQVR", inversion<reference::invert>},
        {"InvertGrayQVR", inversion<reference::invertGray>},
        {"ExtractColorRectangleMaskQVR", rectangleMask},
        {"EmbeddedMaskQVR", embeddedMask},
        {"CountColorQVR", countColour},
        {"CountColorsQVR", countColours},
        {"TransformColorsQVR", transformColours},
        {"ReplaceColorQVR", replaceColour},
        {"ExtractColorQVR", extractColour},
        {"ChangeSaturationQVR", saturation},
        {"ReplaceRedChannelQVR", replaceChannel<Channel::Red>},
        {"ReplaceGreenChannelQVR", replaceChannel<Channel::Green>},
        {"ReplaceBlueChannelQVR", replaceChannel<Channel::Blue>},
        {"FindPictureQVR", findPicture},
        {"isWhiteQVR", region<reference::isWhite>},
        {"isBlackQVR", region<reference::isBlack>},
        {"isGrayQVR", isGrey},
        {"BinaryStringtoPictureQVR", readString},
        {"PicturetoBinaryStringQVR", writeString},
        {"CombinePicturesQVR", combine},
        {"MergePictureQVR", merge},
        {"TintPictureQVR", tint},
    };
    return table;
}

/// Assigns as the method promises to, byte by byte; the mask may be the picture itself.
void assignMask(Picture& picture, bool swap, const Picture& mask)
{
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < std::min(picture.width(), mask.width()); ++x)
        {
            const std::uint8_t red = mask.pixel(x, y < mask.height() ? y : 0).red;
            if (4 * x < picture.width() * picture.bytesPerPixel())
                picture.row(y)[4 * x] = swap ? static_cast<std::uint8_t>(255 - red) : red;
        }
}

reference::FilterRectangle rectangleOf(const Instance& filter)
{
    const auto integer = [&](const char* name) { return filter.get(name).integer(); };
    return {integer("MinX"), integer("MinY"), integer("MaxX"), integer("MaxY")};
}

reference::Picture filtered(const Instance& filter, const Seen& source)
{
    const reference::Picture fresh(source.pixels.width, source.pixels.height, reference::untouched);
    if (filter.definition().name == "PictureSepiaQVR")
    {
        // The names of green's and blue's weights are exchanged.
        reference::SepiaSettings settings;
        settings.redWeight = filter.get("FactorRed").number();
        settings.greenWeight = filter.get("FactorBlue").number();
        settings.blueWeight = filter.get("FactorGreen").number();
        settings.sepiaRed = filter.get("SepiaRed").integer();
        settings.sepiaGreen = filter.get("SepiaGreen").integer();
        settings.sepiaBlue = filter.get("SepiaBlue").integer();
        settings.rectangle = rectangleOf(filter);
        return reference::sepia(source.pixels, settings, fresh);
    }
    constexpr int cubeOffset = 24;
    reference::ColourCube cube;
    Instance same = filter;
    std::memcpy(cube.entries.data(), same.data() + cubeOffset, cube.entries.size() * sizeof(double));
    return reference::mapThroughCube(source.pixels, cube, rectangleOf(filter), fresh);
}

} // namespace

bool locks(const standin::Host& host, Storage storage)
{
    const bool bitmaps =
        host.options().kind == standin::Kind::Console || host.options().kind == standin::Kind::Web;
    return bitmaps ? storage == Storage::Bitmap
                   : storage == Storage::GWorld32 || storage == Storage::GWorld24;
}

int bytesRead(const standin::Host& host, Storage storage)
{
    return bytesPerPixel(locks(host, storage) ? storage : host.options().storageOfNewPictures());
}

Check checkOf(const Call& call)
{
    const auto found = truths().find(call.method.declaration.name);
    return found == truths().end() ? nullptr : found->second(call);
}

Check checkOfAssignment(const Call& call, const Value& value)
{
    if (call.self.isNil())
        return nullptr;
    const Picture mask = value.picture();
    Picture wanted = call.self.clone();
    if (!mask.isNil() && locks(call.host, call.self.storage()) && seen(call.host, mask))
        assignMask(wanted, argument(call, 0).boolean(), mask == call.self ? wanted : mask);
    return [wanted, self = call.self](const Value&) {
        expect(wanted.rgba() == self.rgba(), "assigning EmbeddedMaskQVR left other pixels");
    };
}

Check checkOfRun(const standin::Host& host, const Instance& filter)
{
    const std::optional<Seen> source = seen(host, filter.get("SourcePicture").picture());
    const std::string what = filter.definition().name;
    if (source)
        return [wanted = filtered(filter, *source), filter, what](const Value& result) {
            expect(result.boolean(), what + " gave false");
            expectPicture(wanted, filter.get("DestinationPicture").picture(), what);
        };
    const bool keeps = what == "PictureSepiaQVR";
    const Picture before = keeps ? filter.get("DestinationPicture").picture() : Picture();
    return [before, filter, what](const Value& result) {
        expect(!result.boolean(), what + " gave true without a source");
        expect(filter.get("DestinationPicture").picture() == before, what + " changed its destination");
    };
}

std::vector<Picture> changedPictures(const Call& call)
{
    const std::string& name = call.method.declaration.name;
    if (name.starts_with("Scroll") && !call.self.isNil())
        return {call.self, call.self.mask()};
    if (name == "TransformColorsQVR" && call.arguments.size() > 3)
        return {pictureAt(call, 3)};
    return {};
}

std::vector<MemoryBlock> changedBlocks(const Call& call)
{
    if (call.method.declaration.name != "CountColorsQVR")
        return {};
    return {argument(call, 0).memoryBlock(), argument(call, 1).memoryBlock(),
            argument(call, 2).memoryBlock()};
}

} // namespace fuzz
