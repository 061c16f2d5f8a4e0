// Programs of calls: any method, assignable method, property or filter that the plug-in has registered, with
// any arguments, on any host; after each the ledger, everything that was not to change, and what the
// references say.
#include "fuzz/expect.h"
#include "fuzz/fuzz_host.h"
#include "fuzz/truth.h"

#include <algorithm>
#include <deque>
#include <map>

namespace
{

using fuzz::Check;
using fuzz::FuzzHost;
using fuzz::Input;
using standin::Arguments;
using standin::Instance;
using standin::MemoryBlock;
using standin::Picture;
using standin::PictureQuirks;
using standin::RegisteredClass;
using standin::RegisteredMethod;
using standin::RegisteredProperty;
using standin::Storage;
using standin::String;
using standin::Type;
using standin::Value;

constexpr int mostCalls = 24;
constexpr std::size_t pictureCount = 4;
constexpr std::size_t blockCount = 3;

/// One choice in `count`, mostly not taken.
bool rarely(Input& input, std::size_t count)
{
    return input.below(count) == count - 1;
}

/// The bytes of R, G, B and A for so many pixels: noise, greys, few colours, ends, or what the input has.
std::vector<std::uint8_t> pixelsFrom(Input& input, std::size_t count)
{
    enum class Palette
    {
        Few,
        Noise,
        Greys,
        Ends,
        Given
    };
    constexpr std::uint8_t ends[] = {0, 1, 127, 128, 254, 255};
    const auto palette = static_cast<Palette>(input.below(5));
    auto state = input.bits<std::uint16_t>() * 2654435761U + 1;
    const auto random = [&state] {
        state = state * 1664525U + 1013904223U;
        return static_cast<std::uint8_t>(state >> 24);
    };
    std::vector<std::uint8_t> bytes;
    for (std::size_t pixel = 0; pixel < count; ++pixel)
    {
        const std::uint8_t grey = random();
        for (int channel = 0; channel < 4; ++channel)
            switch (palette)
            {
            case Palette::Few:
                bytes.push_back(grey < 128 ? 0 : static_cast<std::uint8_t>(grey / 64 * 80 + channel));
                break;
            case Palette::Noise:
                bytes.push_back(random());
                break;
            case Palette::Greys:
                bytes.push_back(static_cast<std::uint8_t>(grey + (random() < 16 ? 1 : 0)));
                break;
            case Palette::Ends:
                bytes.push_back(ends[random() % std::size(ends)]);
                break;
            case Palette::Given:
                bytes.push_back(input.byte());
                break;
            }
    }
    return bytes;
}

/// Functions that the host may lack. Without "REALLockObject" a host would free what the plug-in still uses,
/// and without "memoryBlockGetSize" the plug-in trusts every block, which those of a program do not deserve.
std::string absentFunction(Input& input)
{
    static const char* const names[] = {"REALUnlockObject",
                                        "newPicture",
                                        "pluginPictureGraphicsGetter",
                                        "lockPictureDescription",
                                        "REALLockPictureDescription",
                                        "unlockPictureDescription",
                                        "REALPictureClearCache",
                                        "REALGetPictureMask",
                                        "pluginObjectType",
                                        "REALGetPropValueInt",
                                        "REALSetPropValueInt",
                                        "REALSetPropValueUInt32",
                                        "REALSetPropValueString",
                                        "RuntimeGraphicsDrawLine",
                                        "REALLoadObjectMethod",
                                        "REALLoadGlobalMethod",
                                        "PluginNewInstance",
                                        "RuntimeRaiseException",
                                        "REALBuildString",
                                        "REALSetStringEncoding",
                                        "REALGetStringEncoding",
                                        "REALConvertString",
                                        "REALLockString",
                                        "REALUnlockString",
                                        "PluginGetStringData",
                                        "PluginDisposeStringData",
                                        "StringGetCString",
                                        "newMemoryBlock",
                                        "memoryBlockGetPtr",
                                        "DrawPicture",
                                        "LenB"};
    return input.oneOf(names);
}

/// A quirk that leaves the picture's memory as large as the host says.
void setQuirk(Input& input, PictureQuirks& quirks)
{
    constexpr int sides[] = {0, -1, -32768, -2};
    constexpr int depths[] = {1, 8, 16, 0};
    switch (input.below(9))
    {
    case 0:
        quirks.lockFails = true;
        break;
    case 1:
        quirks.nullData = true;
        break;
    case 2:
        quirks.nullPixMap = true;
        break;
    case 3:
        quirks.lockPixelsFails = true;
        break;
    case 4:
        quirks.nullBaseAddress = true;
        break;
    case 5:
        quirks.noSizeProperties = true;
        break;
    case 6:
        quirks.depth = input.oneOf(depths);
        break;
    case 7:
        quirks.describedWidth = input.oneOf(sides);
        break;
    default:
        quirks.describedHeight = input.oneOf(sides);
        break;
    }
}

/// A host with what its programs work on.
class Program
{
public:
    explicit Program(Input& source)
        : input(source),
          absent(rarely(input, 16) ? absentFunction(input) : ""),
          host(input, [this](standin::Options& options) {
              if (!absent.empty())
                  options.absent.insert(absent);
          })
    {
        for (std::size_t index = 0; index < pictureCount; ++index)
            pictures.push_back(newPicture());
        for (std::size_t index = 0; index < blockCount; ++index)
            blocks.push_back(newBlock());
        if (rarely(input, 8))
            odd();
        collectMethods();
    }

    void run()
    {
        for (int calls = 0; calls < mostCalls && !input.atEnd() && !ended; ++calls)
        {
            const std::size_t kind = input.below(16);
            if (kind < 12)
                callAny();
            else if (kind < 15)
                useFilter();
            else
                changeSomething();
        }
    }

private:
    // What there is

    Picture newPicture()
    {
        const int width = rarely(input, 32) ? 0 : input.between(1, rarely(input, 8) ? 140 : 20);
        const int height = input.between(1, 5);
        const std::uint8_t choice = input.byte();
        const bool bitmaps = host.newStorage() == Storage::Bitmap;
        constexpr Storage storages[] = {Storage::GWorld32, Storage::GWorld24, Storage::Drawable,
                                        Storage::GWorld16, Storage::GWorld8};
        const Storage storage = choice >= 240 ? standin::all<Storage>[choice % standin::all<Storage>.size()]
                                : bitmaps     ? Storage::Bitmap
                                              : storages[choice % std::size(storages)];
        Picture picture = host.newPicture(width, height, storage);
        picture.setRgba(
            pixelsFrom(input, static_cast<std::size_t>(width) * static_cast<std::size_t>(height)));
        isOdd |= width == 0;
        // On such a host it depends on the first picture what the host is taken for.
        isOdd |= storage == Storage::Bitmap && host.options().kind == standin::Kind::Unknown;
        return picture;
    }

    MemoryBlock newBlock()
    {
        constexpr int sizes[] = {1024, 256, 1030, 1023, 255, 300, 12, 1, 0};
        MemoryBlock block = host.newMemoryBlock(input.oneOf(sizes));
        std::uint32_t state = input.byte();
        for (std::uint8_t& byte : block.bytes())
        {
            state = state * 1664525U + 1013904223U;
            byte = static_cast<std::uint8_t>(state >> 24);
        }
        return block;
    }

    void odd()
    {
        isOdd = true;
        setQuirk(input,
                 rarely(input, 4) ? host.newPictureQuirks() : pictures[input.below(pictureCount)].quirks());
    }

    void collectMethods()
    {
        for (const RegisteredClass& extension : host.registered().extensions)
            for (const RegisteredMethod& method : extension.methods)
                methods.push_back({&method, true});
        for (const RegisteredMethod& method : host.registered().globals)
            methods.push_back({&method, false});
    }

    void changeSomething()
    {
        Picture& picture = pictures[input.below(pictureCount)];
        switch (input.below(5))
        {
        case 0:
            picture = newPicture();
            break;
        case 1:
            blocks[input.below(blockCount)] = newBlock();
            break;
        case 2:
            // The mask may be the picture itself.
            picture.setMask(input.oneOf(pictures));
            break;
        case 3:
            picture.removeMask();
            break;
        default:
            if (rarely(input, 8))
                odd();
            break;
        }
    }

    // Arguments

    Picture anyPicture()
    {
        const std::size_t choice = input.below(16);
        return choice == 15 ? Picture() : pictures[choice % pictureCount];
    }

    std::uint32_t anyColour()
    {
        const Picture picture = anyPicture();
        const std::uint8_t place = input.byte();
        if (picture.isNil() || picture.width() == 0 || place >= 192)
            return input.bits<std::uint32_t>();
        const standin::Pixel pixel = picture.pixel(place % picture.width(), place / 16 % picture.height());
        return static_cast<std::uint32_t>(pixel.red << 16 | pixel.green << 8 | pixel.blue);
    }

    String anyString()
    {
        if (rarely(input, 16))
            return {};
        if (!string.isNil() && input.flag())
            return string;
        return host.newString(input.text(input.byte()));
    }

    Value anyValue(Type type)
    {
        switch (type)
        {
        case Type::Boolean:
            return input.flag();
        case Type::Integer:
            return input.coordinate(pictures.front().width());
        case Type::UInt32:
            return static_cast<std::uint32_t>(input.coordinate(17));
        case Type::Colour:
            return anyColour();
        case Type::Double:
            return input.real();
        case Type::String:
            return anyString();
        case Type::MemoryBlock:
        {
            const std::size_t choice = input.below(8);
            return choice == 7 ? MemoryBlock() : blocks[choice % blockCount];
        }
        case Type::Picture:
            return anyPicture();
        case Type::Nothing:
            break;
        }
        return nullptr;
    }

    /// Waveforms of any size would take long.
    static void keepSmall(const RegisteredMethod& method, Arguments& arguments)
    {
        constexpr int largest = 200;
        constexpr int largestPen = 8;
        if (method.declaration.name != "RenderSamplesQVR")
            return;
        for (std::size_t index = 0; index < arguments.size(); ++index)
        {
            const std::string& name = method.declaration.parameters[index].name;
            if (name == "outlinewidth" && arguments[index].integer() > largestPen)
                arguments[index] = arguments[index].integer() % largestPen;
            if ((name == "SampleCount" || name == "Width" || name == "Height") &&
                arguments[index].integer() > largest)
                arguments[index] = arguments[index].integer() % largest;
        }
    }

    /// Arguments for all parameters, or without those that have defaults. A variable may stand for two of
    /// them.
    Arguments argumentsFor(const RegisteredMethod& method)
    {
        const std::vector<standin::Parameter>& parameters = method.declaration.parameters;
        const std::size_t count = input.flag() ? parameters.size() : method.declaration.requiredCount();
        const bool shared = rarely(input, 4);
        Arguments arguments;
        variables.clear();
        std::map<Type, Value*> ofType;
        for (std::size_t index = 0; index < count; ++index)
        {
            const standin::Parameter& parameter = parameters[index];
            if (!parameter.byref)
            {
                arguments.push_back(anyValue(parameter.type));
                continue;
            }
            Value*& variable = ofType[parameter.type];
            if (variable == nullptr || !shared)
                variable = &variables.emplace_back(anyValue(parameter.type));
            arguments.emplace_back(standin::byref(*variable));
        }
        keepSmall(method, arguments);
        return arguments;
    }

    // Calls

    struct Method
    {
        const RegisteredMethod* definition;
        bool ofPictures;
    };

    void callAny()
    {
        const Method& method = methods[input.below(methods.size())];
        const Picture self = method.ofPictures ? anyPicture() : Picture();
        if (method.definition->setter != nullptr && input.flag())
        {
            assign(*method.definition, self);
            return;
        }
        const Arguments arguments = argumentsFor(*method.definition);
        const fuzz::Call call{host, *method.definition, self, arguments};
        const Check check = isOrdinary() ? fuzz::checkOf(call) : nullptr;
        const std::vector<Picture> changing = fuzz::changedPictures(call);
        const std::vector<MemoryBlock> changingBlocks = fuzz::changedBlocks(call);
        const std::string& name = method.definition->declaration.name;
        const Value result = around(method.definition->text, changing, changingBlocks, check, [&] {
            return method.ofPictures ? host.call(self, name, arguments) : host.callGlobal(name, arguments);
        });
        keep(result);
    }

    void assign(const RegisteredMethod& method, const Picture& self)
    {
        const Arguments arguments = argumentsFor(method);
        const Value value = anyValue(method.declaration.result);
        const fuzz::Call call{host, method, self, arguments};
        const Check check = isOrdinary() ? fuzz::checkOfAssignment(call, value) : nullptr;
        around(method.text, {self}, {}, check,
               [&] { return host.assign(self, method.declaration.name, arguments, value); });
    }

    void useFilter()
    {
        const std::vector<RegisteredClass>& classes = host.registered().classes;
        const RegisteredClass& definition = classes[input.below(classes.size())];
        Instance& filter = filters[definition.name];
        if (filter.isNil())
            filter = host.newInstance(definition.name);
        switch (input.below(4))
        {
        case 0:
        case 1:
            setProperties(filter);
            break;
        case 2:
            runFilter(filter);
            break;
        default:
            callOfFilter(filter);
            break;
        }
    }

    void setProperties(Instance& filter)
    {
        const std::vector<RegisteredProperty>& properties = filter.definition().properties;
        for (std::size_t count = input.below(6); count > 0; --count)
        {
            const RegisteredProperty& property = properties[input.below(properties.size())];
            const Type type = standin::parseDeclaration(property.name + " as " + property.type).result;
            around(property.name, {}, {}, nullptr, [&]() -> Value {
                filter.set(property.name, anyValue(type));
                return filter.get(property.name);
            });
        }
    }

    void runFilter(Instance& filter)
    {
        const Check check = isOrdinary() ? fuzz::checkOfRun(host, filter) : nullptr;
        const Picture before = filter.get("DestinationPicture").picture();
        const Value result = around(filter.definition().name, {}, {}, nullptr, [&] {
            Value done = filter.call("Run");
            // The sepia filter overwrites what stood there, and nobody gives that reference back any more.
            if (filter.definition().name == "PictureSepiaQVR" && done.boolean() && !before.isNil())
                ++lostReferences;
            return done;
        });
        if (check && !struck)
            check(result);
        keep(filter.get("DestinationPicture"));
    }

    void callOfFilter(Instance& filter)
    {
        const RegisteredMethod& method = input.oneOf(filter.definition().methods);
        if (method.declaration.name == "Run")
            return;
        const Arguments arguments = argumentsFor(method);
        if (method.setter != nullptr && input.flag())
        {
            const Value value = anyValue(method.declaration.result);
            around(method.text, {}, {}, nullptr,
                   [&] { return filter.assign(method.declaration.name, arguments, value); });
            return;
        }
        around(method.text, {}, {}, nullptr, [&] { return filter.call(method.declaration.name, arguments); });
    }

    /// Pictures and strings that a call gave are used by later ones; a waveform may be too large to be looked
    /// at so often.
    void keep(const Value& result)
    {
        constexpr int mostPixels = 4096;
        const auto* picture = std::get_if<Picture>(&result.held());
        if (picture != nullptr && !picture->isNil() && picture->width() * picture->height() <= mostPixels)
            pictures[input.below(pictureCount)] = *picture;
        const auto* text = std::get_if<String>(&result.held());
        if (text != nullptr && !text->isNil())
            string = *text;
    }

    // What is demanded

    /// Whether the references tell what the host and its pictures lead to.
    bool isOrdinary() const
    {
        return !isOdd && absent.empty() && host.isUsual();
    }

    struct PictureState
    {
        Picture picture;
        std::vector<std::uint8_t> bytes;
        Picture mask;
    };

    template <class Handle>
    static bool contains(const std::vector<Handle>& handles, const Handle& handle)
    {
        return std::find(handles.begin(), handles.end(), handle) != handles.end();
    }

    /// Makes a call, perhaps with a fault; nothing else may have changed than what is named.
    template <class Job>
    Value around(const std::string& what, const std::vector<Picture>& changing,
                 const std::vector<MemoryBlock>& changingBlocks, const Check& check, Job job)
    {
        std::vector<PictureState> pictureStates;
        for (const Picture& picture : pictures)
            if (!contains(changing, picture))
                pictureStates.push_back({picture, picture.rgba(), picture.mask()});
        std::vector<std::pair<MemoryBlock, std::vector<std::uint8_t>>> blockStates;
        for (const MemoryBlock& block : blocks)
            if (!contains(changingBlocks, block))
                blockStates.emplace_back(block, std::vector(block.bytes().begin(), block.bytes().end()));

        const std::uint8_t fault = input.byte();
        host.faults().clear();
        if (fault >= 192)
            host.faults().failAnyCall(fault - 191);
        Value result = job();
        struck = host.faults().failures() > 0;
        const std::string failed = host.faults().lastFailure();
        host.faults().clear();
        // A host that was not recognised may be taken for another kind from then on.
        isOdd |= failed.starts_with("pluginObjectType");

        for (const auto& [picture, bytes, mask] : pictureStates)
            fuzz::expect(picture.rgba() == bytes && picture.mask() == mask, what + " changed a picture");
        for (const auto& [block, bytes] : blockStates)
            fuzz::expect(std::equal(bytes.begin(), bytes.end(), block.bytes().begin(), block.bytes().end()),
                         what + " changed a memory block");
        expectLedger(what, failed);
        if (check && !struck)
            check(result);
        return result;
    }

    void expectLedger(const std::string& what, const std::string& failed)
    {
        // Without a function to give something back it stays; what was not found once may be missing later
        // on.
        const bool incomplete = !absent.empty() || failed.starts_with("CFBundleGetFunctionPointerForName") ||
                                failed.starts_with("REALLoad");
        const standin::Ledger ledger = host.ledger();
        if (ledger.balanced())
            return;
        if (incomplete)
        {
            ended = true;
            return;
        }
        const bool justLost = ledger.faults.empty() && ledger.references == lostReferences &&
                              ledger.descriptionLocks == 0 && ledger.pixelLocks == 0 &&
                              ledger.heapBlocks == 0 && ledger.stringData == 0 && ledger.systemObjects == 0;
        fuzz::expect(justLost,
                     what + (failed.empty() ? "" : ", " + failed + " failed") + ": " + ledger.describe());
    }

    Input& input;
    std::string absent;
    FuzzHost host;
    bool isOdd = false;
    bool ended = false;
    bool struck = false;
    int lostReferences = 0;
    std::vector<Method> methods;
    std::vector<Picture> pictures;
    std::vector<MemoryBlock> blocks;
    String string;
    std::map<std::string, Instance> filters;
    std::deque<Value> variables;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    Program(input).run();
    return 0;
}
