#include "operations/brightness_contrast.h"

#include "editor/walks.h"
#include "operations/single_line.h"

namespace qvr::brightnessContrast
{

namespace
{

// The formulas. `value` is one channel as a double, or a vector of them; the steps and their order are part
// of the result, since its last bit can decide a truncation.

struct Contrast
{
    explicit Contrast(double contrast) : factor(contrast + 1.0)
    {
    }
    template <class Value>
    Value operator()(Value value) const
    {
        return (value - 127.0) * factor + 127.0;
    }
    double factor;
};

struct AbsoluteBrightness
{
    template <class Value>
    Value operator()(Value value) const
    {
        return value + brightness;
    }
    double brightness;
};

struct Line
{
    template <class Value>
    Value operator()(Value value) const
    {
        return value * scale + offset;
    }
    double scale;
    double offset;
};

/// Towards 255 for a brightness of 0 and more (NaN counts as that), towards 0 below.
Line linearBrightness(double brightness)
{
    if (0.0 > brightness)
        return {(brightness + 255.0) / 255.0, 0.0};
    return {(255.0 - brightness) / 255.0, brightness};
}

template <class Second>
struct ContrastThen
{
    template <class Value>
    Value operator()(Value value) const
    {
        return second(contrast(value));
    }
    Contrast contrast;
    Second second;
};

/// A formula for each channel.
template <class Formula>
struct PerChannel
{
    Formula red;
    Formula green;
    Formula blue;
};

/// The formula as it is: in doubles.
template <class Formula>
struct InDoubles
{
    template <class Integers>
    Integers operator()(Integers channel) const
    {
        return truncateAny(formula(toDoubles(channel)));
    }
    Formula formula;
};

/// A new picture of the functions' values; `finish` turns them into what is stored.
template <class Function, class Finish>
REALpictureStruct* mapChannels(const PictureReader& reader, PictureWriter& writer,
                               const PerChannel<Function>& functions, Finish finish)
{
    mapBlock(
        writer, wholeBlock(reader),
        [functions, finish](auto pixels) {
            return finish(UnclampedChannels{functions.red(pixels.red()), functions.green(pixels.green()),
                                            functions.blue(pixels.blue())});
        },
        reader);
    return writer.RenderPictureWriter();
}

/// A new picture of the formulas' truncated values, stored as `Finish` says.
template <class Finish, class Formula>
REALpictureStruct* mapTruncated(REALpictureStruct* picture, const PerChannel<Formula>& formulas)
{
    // In smaller pictures looking for lines takes longer than it saves.
    constexpr int32_t fewestPixels = 4096;

    PictureReader reader;
    PictureWriter writer;
    if (!reader.open(picture) || !writer.openNew(reader.width, reader.height))
        return nullptr;
    PerChannel<SingleLine> lines;
    if (reader.width * reader.height >= fewestPixels && findLine<Finish>(formulas.red, lines.red) &&
        findLine<Finish>(formulas.green, lines.green) && findLine<Finish>(formulas.blue, lines.blue))
        return mapChannels(reader, writer, lines, Finish());
    return mapChannels(reader, writer,
                       PerChannel<InDoubles<Formula>>{{formulas.red}, {formulas.green}, {formulas.blue}},
                       Finish());
}

template <class Formula>
REALpictureStruct* mapClamped(REALpictureStruct* picture, const PerChannel<Formula>& formulas)
{
    return mapTruncated<Clamped>(picture, formulas);
}

} // namespace

REALpictureStruct* ContrastLinBrightnessPicture3(REALpictureStruct* picture, double contrastRed,
                                                 double contrastGreen, double contrastBlue,
                                                 double brightnessRed, double brightnessGreen,
                                                 double brightnessBlue)
{
    return mapClamped<ContrastThen<Line>>(picture,
                                          {{Contrast(contrastRed), linearBrightness(brightnessRed)},
                                           {Contrast(contrastGreen), linearBrightness(brightnessGreen)},
                                           {Contrast(contrastBlue), linearBrightness(brightnessBlue)}});
}

REALpictureStruct* ContrastLinBrightnessPicture1(REALpictureStruct* picture, double contrast,
                                                 double brightness)
{
    return ContrastLinBrightnessPicture3(picture, contrast, contrast, contrast, brightness, brightness,
                                         brightness);
}

REALpictureStruct* ContrastAbsBrightnessPicture3(REALpictureStruct* picture, double contrastRed,
                                                 double contrastGreen, double contrastBlue,
                                                 double brightnessRed, double brightnessGreen,
                                                 double brightnessBlue)
{
    return mapClamped<ContrastThen<AbsoluteBrightness>>(picture,
                                                        {{Contrast(contrastRed), {brightnessRed}},
                                                         {Contrast(contrastGreen), {brightnessGreen}},
                                                         {Contrast(contrastBlue), {brightnessBlue}}});
}

REALpictureStruct* ContrastAbsBrightnessPicture1(REALpictureStruct* picture, double contrast,
                                                 double brightness)
{
    return ContrastAbsBrightnessPicture3(picture, contrast, contrast, contrast, brightness, brightness,
                                         brightness);
}

REALpictureStruct* AbsBrightnessPicture3(REALpictureStruct* picture, double brightnessRed,
                                         double brightnessGreen, double brightnessBlue)
{
    return mapClamped<AbsoluteBrightness>(picture, {{brightnessRed}, {brightnessGreen}, {brightnessBlue}});
}

REALpictureStruct* AbsBrightnessPicture1(REALpictureStruct* picture, double brightness)
{
    return AbsBrightnessPicture3(picture, brightness, brightness, brightness);
}

REALpictureStruct* LinBrightnessPicture3(REALpictureStruct* picture, double brightnessRed,
                                         double brightnessGreen, double brightnessBlue)
{
    const PerChannel<Line> lines{linearBrightness(brightnessRed), linearBrightness(brightnessGreen),
                                 linearBrightness(brightnessBlue)};
    // Deliberately not clamped, unlike the rest of the family.
    return mapTruncated<LowBytes>(picture, lines);
}

REALpictureStruct* LinBrightnessPicture1(REALpictureStruct* picture, double brightness)
{
    return LinBrightnessPicture3(picture, brightness, brightness, brightness);
}

REALpictureStruct* ContrastPicture3(REALpictureStruct* picture, double contrastRed, double contrastGreen,
                                    double contrastBlue)
{
    return mapClamped<Contrast>(picture,
                                {Contrast(contrastRed), Contrast(contrastGreen), Contrast(contrastBlue)});
}

REALpictureStruct* ContrastPicture1(REALpictureStruct* picture, double contrast)
{
    return ContrastPicture3(picture, contrast, contrast, contrast);
}

REALpictureStruct* TransformPicture(REALpictureStruct* picture, double a, double b)
{
    const Line line{a, b};
    return mapClamped<Line>(picture, {line, line, line});
}

} // namespace qvr::brightnessContrast
