#include "script/builtins.h"

#include "host/file.h"
#include "host/names.h"
#include "media/image.h"
#include "script/files.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>

namespace script
{

using standin::Error;
using standin::MemoryBlock;
using standin::Picture;
using standin::sameName;

namespace
{

std::string counted(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " argument" : " arguments");
}

void expectCount(std::string_view name, const Values& arguments, std::size_t least, std::size_t most)
{
    if (arguments.size() >= least && arguments.size() <= most)
        return;
    throw Error("expected " + (least == most ? "" : std::to_string(least) + " to ") + counted(most) + ": " +
                std::string(name) + " was given " + std::to_string(arguments.size()));
}

/// The entry of a table, or null.
template <class Table>
const typename Table::value_type* findNamed(const Table& table, std::string_view name)
{
    const auto found = std::find_if(table.begin(), table.end(),
                                    [name](const auto& entry) { return sameName(entry.name, name); });
    return found == table.end() ? nullptr : &*found;
}

template <class Table>
std::vector<std::string> namesIn(const Table& table)
{
    std::vector<std::string> names;
    for (const auto& entry : table)
        names.emplace_back(entry.name);
    return names;
}

// Files

/// FolderItems and plain texts name files.
std::string pathOf(const Services& services, const Value& file)
{
    const auto* item = std::get_if<File>(&file);
    return services.environment.path(item != nullptr ? item->name : textOf(file));
}

Value openPicture(const Services& services, const Value& file)
{
    const Environment& environment = services.environment;
    return pictureOf(services.host, environment.readImage(pathOf(services, file)), environment.storage);
}

/// The picture as its mask and, where it has none, its alpha bytes make it look; opaque ones have no alpha.
media::Image savedImage(const Picture& picture)
{
    constexpr std::uint8_t opaque = 255;
    constexpr std::size_t rgba = 4;
    const Picture mask = picture.mask();
    if (mask.isNil())
        return imageOf(picture, isTranslucent(picture));
    media::Image image = imageOf(picture, true);
    bool translucent = false;
    for (std::size_t index = rgba - 1; index < image.bytes.size(); index += rgba)
    {
        std::uint8_t& alpha = image.bytes[index];
        const auto pixel = static_cast<int>(index / rgba);
        const int x = pixel % image.width;
        const int y = pixel / image.width;
        const bool covered = x < mask.width() && y < mask.height();
        // White lets through what lies behind.
        alpha = covered ? static_cast<std::uint8_t>(opaque - mask.pixel(x, y).red) : opaque;
        translucent = translucent || alpha != opaque;
    }
    return translucent ? image : imageOf(picture);
}

struct SaveFormat
{
    std::string_view name;
    std::optional<media::Format> format; ///< nothing: by the file's name
};

constexpr std::array<SaveFormat, 4> saveFormats{{{"SaveAsDefault", std::nullopt},
                                                 {"SaveAsPNG", media::Format::png},
                                                 {"SaveAsJPEG", media::Format::jpeg},
                                                 {"SaveAsWindowsBMP", media::Format::bmp}}};

void savePicture(const Services& services, const Picture& picture, const Values& arguments)
{
    const std::string path = pathOf(services, arguments.at(0));
    const std::int32_t format = arguments.size() > 1 ? integerOf(arguments[1]) : 0;
    if (format < 0 || format >= static_cast<std::int32_t>(saveFormats.size()))
        throw Error("expected a format such as Picture.SaveAsPNG");
    const std::optional<media::Format> wanted = saveFormats[static_cast<std::size_t>(format)].format;
    if (services.environment.saveImage)
        services.environment.saveImage(path, savedImage(picture));
    else if (wanted)
        standin::writeFile(path, media::encoded(savedImage(picture), *wanted));
    else
        media::writeImage(path, savedImage(picture));
}

// Functions

template <double (*function)(double)>
Value ofNumber(const Services&, const Values& arguments)
{
    return function(numberOf(arguments[0]));
}

Value absolute(const Services&, const Values& arguments)
{
    if (const auto* number = std::get_if<std::int32_t>(&arguments[0]))
        return *number < 0 ? static_cast<std::int32_t>(0 - static_cast<std::uint32_t>(*number)) : *number;
    return std::abs(numberOf(arguments[0]));
}

bool areIntegers(const Values& values)
{
    return std::all_of(values.begin(), values.end(),
                       [](const Value& value) { return std::holds_alternative<std::int32_t>(value); });
}

template <bool wantsLargest>
Value extreme(const Services&, const Values& arguments)
{
    const Value* best = &arguments[0];
    for (const Value& value : arguments)
        if (wantsLargest ? numberOf(value) > numberOf(*best) : numberOf(value) < numberOf(*best))
            best = &value;
    if (areIntegers(arguments))
        return *best;
    return numberOf(*best);
}

Value power(const Services&, const Values& arguments)
{
    return std::pow(numberOf(arguments[0]), numberOf(arguments[1]));
}

Value rgb(const Services&, const Values& arguments)
{
    constexpr std::int32_t largest = 255;
    constexpr int bitsPerChannel = 8;
    std::uint32_t colour = 0;
    for (const Value& argument : arguments)
    {
        const std::int32_t channel = integerOf(argument);
        if (channel < 0 || channel > largest)
            throw Error("expected channels of 0 to 255, got " + std::to_string(channel));
        colour = colour << bitsPerChannel | static_cast<std::uint32_t>(channel);
    }
    return Colour{colour};
}

Value str(const Services& services, const Values& arguments)
{
    return services.host.newString(shown(arguments[0]));
}

Value hex(const Services& services, const Values& arguments)
{
    constexpr std::size_t digits = 8;
    constexpr int base = 16;
    std::array<char, digits> text{};
    const auto number = static_cast<std::uint32_t>(integerOf(arguments[0]));
    const char* end = std::to_chars(text.data(), text.data() + text.size(), number, base).ptr;
    std::string result(static_cast<const char*>(text.data()), end);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return services.host.newString(result);
}

/// The number that a text begins with, or 0.
Value val(const Services&, const Values& arguments)
{
    std::string_view text = textOf(arguments[0]);
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double value = 0;
    const bool isNumber = std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc();
    return isNumber && std::isfinite(value) ? value : 0.0;
}

/// Bytes that begin a character of UTF-8; of other texts each.
Value len(const Services&, const Values& arguments)
{
    constexpr unsigned char continuationMask = 0xC0;
    constexpr unsigned char continuation = 0x80;
    const std::string& text = textOf(arguments[0]);
    const auto& string = std::get<standin::String>(arguments[0]);
    if (string.isNil() || string.encoding() != standin::encodingUtf8)
        return static_cast<std::int32_t>(text.size());
    return static_cast<std::int32_t>(std::count_if(
        text.begin(), text.end(), [](unsigned char c) { return (c & continuationMask) != continuation; }));
}

Value lenB(const Services&, const Values& arguments)
{
    return static_cast<std::int32_t>(textOf(arguments[0]).size());
}

/// So many bytes from a place on, which counts from 1; fewer at the end.
Value midB(const Services& services, const Values& arguments)
{
    const std::string& text = textOf(arguments[0]);
    const std::int32_t begin = integerOf(arguments[1]);
    const std::int32_t count = integerOf(arguments[2]);
    if (begin < 1 || count < 0)
        throw Error("OutOfBoundsException: there are no " + std::to_string(count) + " bytes at " +
                    std::to_string(begin));
    const std::size_t place = std::min(static_cast<std::size_t>(begin - 1), text.size());
    return services.host.newString(text.substr(place, static_cast<std::size_t>(count)),
                                   standin::encodingNone);
}

/// Compares bytes: -1, 0 or 1.
Value strComp(const Services&, const Values& arguments)
{
    if (integerOf(arguments[2]) != 0)
        throw Error("expected 0, the comparison of bytes");
    const int order = textOf(arguments[0]).compare(textOf(arguments[1]));
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

Value folderItem(const Services&, const Values& arguments)
{
    return File{textOf(arguments[0])};
}

Value openSamples(const Services& services, const Values& arguments)
{
    return loadBlock(services.host, pathOf(services, arguments[0]));
}

Value openBlock(const Services& services, const Values& arguments)
{
    return services.host.newMemoryBlock(standin::readFile(pathOf(services, arguments[0])));
}

Value openBytes(const Services& services, const Values& arguments)
{
    return services.host.newString(standin::readText(pathOf(services, arguments[0])), standin::encodingNone);
}

Value argument(const Services& services, const Values& arguments)
{
    const std::int32_t index = integerOf(arguments[0]);
    const std::vector<std::string>& all = services.environment.arguments;
    if (index < 0 || static_cast<std::size_t>(index) >= all.size())
        throw Error("OutOfBoundsException: there is no argument " + std::to_string(index) + " of " +
                    std::to_string(all.size()));
    return services.host.newString(all[static_cast<std::size_t>(index)]);
}

struct Function
{
    std::string_view name;
    std::size_t least;
    std::size_t most;
    Value (*call)(const Services& services, const Values& arguments);
};

constexpr std::size_t any = 64;

constexpr std::array<Function, 27> functions{{
    {"Abs", 1, 1, absolute},
    {"args", 1, 1, argument},
    {"Atan", 1, 1, ofNumber<std::atan>},
    {"Ceil", 1, 1, ofNumber<std::ceil>},
    {"Cos", 1, 1, ofNumber<std::cos>},
    {"Exp", 1, 1, ofNumber<std::exp>},
    {"Floor", 1, 1, ofNumber<std::floor>},
    {"GetFolderItem", 1, 1, folderItem},
    {"Hex", 1, 1, hex},
    {"Len", 1, 1, len},
    {"LenB", 1, 1, lenB},
    {"Log", 1, 1, ofNumber<std::log>},
    {"Max", 2, any, extreme<true>},
    {"MidB", 3, 3, midB},
    {"Min", 2, any, extreme<false>},
    {"OpenBlock", 1, 1, openBlock},
    {"OpenBytes", 1, 1, openBytes},
    {"OpenSamples", 1, 1, openSamples},
    {"Pow", 2, 2, power},
    {"RGB", 3, 3, rgb},
    {"Round", 1, 1, ofNumber<std::round>},
    {"Sin", 1, 1, ofNumber<std::sin>},
    {"Sqrt", 1, 1, ofNumber<std::sqrt>},
    {"Str", 1, 1, str},
    {"StrComp", 3, 3, strComp},
    {"Tan", 1, 1, ofNumber<std::tan>},
    {"Val", 1, 1, val},
}};

// Memory blocks

struct BlockAccess
{
    std::string_view name;
    std::int32_t size;
    Value (*read)(const std::uint8_t* bytes);
    void (*write)(std::uint8_t* bytes, const Value& value);
};

template <class Number>
Value readNumber(const std::uint8_t* bytes)
{
    Number number{};
    std::memcpy(&number, bytes, sizeof number);
    if constexpr (std::is_floating_point_v<Number>)
        return static_cast<double>(number);
    else if constexpr (std::is_same_v<Number, std::uint32_t>)
        return number;
    else
        return static_cast<std::int32_t>(number);
}

template <class Number>
void writeNumber(std::uint8_t* bytes, const Value& value)
{
    Number number{};
    if constexpr (std::is_floating_point_v<Number>)
        number = static_cast<Number>(numberOf(value));
    else
        number = static_cast<Number>(std::get<std::uint32_t>(converted(value, {Kind::UInt32, {}})));
    std::memcpy(bytes, &number, sizeof number);
}

template <class Number>
constexpr BlockAccess accessTo(std::string_view name)
{
    return {name, sizeof(Number), readNumber<Number>, writeNumber<Number>};
}

constexpr std::array<BlockAccess, 9> blockAccesses{
    accessTo<std::uint8_t>("Byte"),         accessTo<std::int8_t>("Int8Value"),
    accessTo<std::uint8_t>("UInt8Value"),   accessTo<std::int16_t>("Int16Value"),
    accessTo<std::uint16_t>("UInt16Value"), accessTo<std::int32_t>("Int32Value"),
    accessTo<std::uint32_t>("UInt32Value"), accessTo<float>("SingleValue"),
    accessTo<double>("DoubleValue")};

/// The bytes of an entry, which lie within the block.
std::span<std::uint8_t> entryOf(MemoryBlock block, std::int32_t offset, std::int32_t size)
{
    if (offset < 0 || size < 0 || offset > block.size() - size)
        throw Error("OutOfBoundsException: a MemoryBlock of " + std::to_string(block.size()) +
                    " bytes has no " + std::to_string(size) + " at " + std::to_string(offset));
    return block.bytes().subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(size));
}

std::optional<Value> blockMember(const Services& services, const MemoryBlock& block, std::string_view name,
                                 const Values& arguments)
{
    if (sameName(name, "Size"))
    {
        expectCount(name, arguments, 0, 0);
        return block.size();
    }
    if (sameName(name, "StringValue"))
    {
        expectCount(name, arguments, 2, 2);
        const auto bytes = entryOf(block, integerOf(arguments[0]), integerOf(arguments[1]));
        return services.host.newString({bytes.begin(), bytes.end()}, standin::encodingNone);
    }
    const BlockAccess* access = findNamed(blockAccesses, name);
    if (access == nullptr)
        return std::nullopt;
    expectCount(access->name, arguments, 1, 1);
    return access->read(entryOf(block, integerOf(arguments[0]), access->size).data());
}

// Pictures

Value save(const Services& services, const Picture& picture, const Values& arguments)
{
    savePicture(services, picture, arguments);
    return nullptr;
}

Value maskOf(const Services&, const Picture& picture, const Values&)
{
    const Picture mask = picture.mask();
    return mask.isNil() ? Value(nullptr) : Value(mask);
}

struct PictureMember
{
    std::string_view name;
    std::size_t least;
    std::size_t most;
    Value (*get)(const Services& services, const Picture& picture, const Values& arguments);
};

constexpr std::array<PictureMember, 6> pictureMembers{{
    {"Depth", 0, 0, [](const Services&, const Picture&, const Values&) -> Value { return 32; }},
    {"Height", 0, 0,
     [](const Services&, const Picture& picture, const Values&) -> Value { return picture.height(); }},
    {"Mask", 0, 0, maskOf},
    {"RGBSurface", 0, 0,
     [](const Services&, const Picture& picture, const Values&) -> Value { return Surface{picture}; }},
    {"Save", 1, 2, save},
    {"Width", 0, 0,
     [](const Services&, const Picture& picture, const Values&) -> Value { return picture.width(); }},
}};

std::optional<Value> pictureMember(const Services& services, const Picture& picture, std::string_view name,
                                   const Values& arguments)
{
    const PictureMember* found = findNamed(pictureMembers, name);
    if (found == nullptr)
        return std::nullopt;
    expectCount(found->name, arguments, found->least, found->most);
    return found->get(services, picture, arguments);
}

struct Spot
{
    std::int32_t x;
    std::int32_t y;
};

Spot spotOf(const Picture& picture, const Values& arguments)
{
    expectCount("Pixel", arguments, 2, 2);
    const Spot spot{integerOf(arguments[0]), integerOf(arguments[1])};
    if (spot.x < 0 || spot.y < 0 || spot.x >= picture.width() || spot.y >= picture.height())
        throw Error("OutOfBoundsException: a Picture of " + std::to_string(picture.width()) + " x " +
                    std::to_string(picture.height()) + " has no pixel " + std::to_string(spot.x) + ", " +
                    std::to_string(spot.y));
    return spot;
}

constexpr int redShift = 16;
constexpr int greenShift = 8;
constexpr std::uint32_t channelMask = 0xFF;

Value pixelOf(const Picture& picture, const Values& arguments)
{
    const Spot spot = spotOf(picture, arguments);
    const standin::Pixel pixel = picture.pixel(spot.x, spot.y);
    return Colour{static_cast<std::uint32_t>(pixel.red) << redShift |
                  static_cast<std::uint32_t>(pixel.green) << greenShift | pixel.blue};
}

void setPixel(Picture picture, const Values& arguments, Colour colour)
{
    const Spot spot = spotOf(picture, arguments);
    const auto channel = [&](int shift) {
        return static_cast<std::uint8_t>(colour.rgb >> shift & channelMask);
    };
    picture.setPixel(
        spot.x, spot.y,
        {channel(redShift), channel(greenShift), channel(0), picture.pixel(spot.x, spot.y).alpha});
}

std::optional<Value> colourMember(Colour colour, std::string_view name)
{
    constexpr std::array<std::pair<std::string_view, int>, 3> channels{
        {{"Red", redShift}, {"Green", greenShift}, {"Blue", 0}}};
    for (const auto& [channel, shift] : channels)
        if (sameName(channel, name))
            return static_cast<std::int32_t>(colour.rgb >> shift & channelMask);
    return std::nullopt;
}

} // namespace

bool isFunction(std::string_view name)
{
    return findNamed(functions, name) != nullptr;
}

Value callFunction(const Services& services, std::string_view name, const Values& arguments)
{
    const Function* function = findNamed(functions, name);
    if (function == nullptr)
        throw Error("there is no function " + std::string(name));
    expectCount(function->name, arguments, function->least, function->most);
    return function->call(services, arguments);
}

std::vector<std::string> functionNames()
{
    return namesIn(functions);
}

std::vector<std::string> ownMemberNames(const Value& object)
{
    if (std::holds_alternative<Picture>(object))
        return namesIn(pictureMembers);
    if (std::holds_alternative<MemoryBlock>(object))
        return namesIn(blockAccesses);
    return {};
}

bool isOwnPictureMember(std::string_view name)
{
    return findNamed(pictureMembers, name) != nullptr;
}

bool hasClassMembers(std::string_view className)
{
    return sameName(className, "Picture");
}

Value classMember(const Services& services, std::string_view className, std::string_view member,
                  const Values& arguments)
{
    if (sameName(member, "Open"))
    {
        expectCount("Open", arguments, 1, 1);
        return openPicture(services, arguments[0]);
    }
    for (std::size_t format = 0; format < saveFormats.size(); ++format)
        if (sameName(member, saveFormats[format].name))
        {
            expectCount(member, arguments, 0, 0);
            return static_cast<std::int32_t>(format);
        }
    throw Error(std::string(className) + " has no " + std::string(member));
}

Value newObject(const Services& services, const VariableType& type, const Values& arguments)
{
    constexpr std::int32_t largestSide = 32767;
    constexpr std::int32_t onlyDepth = 32;
    constexpr std::uint8_t white = 255;
    constexpr std::uint64_t bytesPerPixel = 4;
    switch (type.kind)
    {
    case Kind::Picture:
    {
        expectCount("Picture", arguments, 2, 3);
        const std::int32_t width = integerOf(arguments[0]);
        const std::int32_t height = integerOf(arguments[1]);
        if (width < 1 || height < 1 || width > largestSide || height > largestSide)
            throw Error("expected a width and a height of 1 to " + std::to_string(largestSide) + ", got " +
                        std::to_string(width) + " x " + std::to_string(height));
        if (arguments.size() > 2 && integerOf(arguments[2]) != onlyDepth)
            throw Error("expected a depth of 32");
        checkSize(services,
                  bytesPerPixel * static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height));
        Picture picture = services.host.newPicture(width, height);
        picture.fill({white, white, white, white});
        return picture;
    }
    case Kind::MemoryBlock:
    {
        expectCount("MemoryBlock", arguments, 1, 1);
        const std::int32_t size = integerOf(arguments[0]);
        if (size < 0)
            throw Error("expected a size of 0 or more, got " + std::to_string(size));
        checkSize(services, static_cast<std::uint64_t>(size));
        return services.host.newMemoryBlock(size);
    }
    case Kind::Instance:
        expectCount(type.className, arguments, 0, 0);
        return services.host.newInstance(type.className);
    default:
        throw Error("expected a class, " + nameOf(type) + " has no New");
    }
}

std::optional<Value> member(const Services& services, const Value& object, std::string_view name,
                            const Values& arguments)
{
    if (const auto* picture = std::get_if<Picture>(&object))
        return pictureMember(services, *picture, name, arguments);
    if (const auto* block = std::get_if<MemoryBlock>(&object))
        return blockMember(services, *block, name, arguments);
    if (const auto* surface = std::get_if<Surface>(&object); surface != nullptr && sameName(name, "Pixel"))
        return pixelOf(surface->picture, arguments);
    if (const auto* file = std::get_if<File>(&object); file != nullptr && sameName(name, "Name"))
        return services.host.newString(std::filesystem::path(file->name).filename().string());
    if (const auto* colour = std::get_if<Colour>(&object))
    {
        const std::optional<Value> channel = colourMember(*colour, name);
        if (channel)
            expectCount(name, arguments, 0, 0);
        return channel;
    }
    return std::nullopt;
}

bool assignMember(const Services&, const Value& object, std::string_view name, const Values& arguments,
                  const Value& value)
{
    if (const auto* surface = std::get_if<Surface>(&object); surface != nullptr && sameName(name, "Pixel"))
    {
        setPixel(surface->picture, arguments, colourOf(value));
        return true;
    }
    if (const auto* block = std::get_if<MemoryBlock>(&object))
        if (const BlockAccess* access = findNamed(blockAccesses, name))
        {
            expectCount(access->name, arguments, 1, 1);
            access->write(entryOf(*block, integerOf(arguments[0]), access->size).data(), value);
            return true;
        }
    if (const auto* picture = std::get_if<Picture>(&object); picture != nullptr && sameName(name, "Mask"))
    {
        expectCount("Mask", arguments, 0, 0);
        const Value mask = converted(value, {Kind::Picture, {}});
        Picture target = *picture;
        const auto* newMask = std::get_if<Picture>(&mask);
        if (newMask != nullptr && *newMask == target)
            throw Error("expected another picture, none can be its own mask");
        if (newMask != nullptr)
            target.setMask(*newMask);
        else
            target.removeMask();
        return true;
    }
    return false;
}

void checkSize(const Services& services, std::uint64_t bytes)
{
    if (bytes > services.environment.largestObject)
        throw Error("expected something smaller: " + std::to_string(bytes) + " bytes are too many");
}

} // namespace script
