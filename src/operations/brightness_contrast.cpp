#include "operations/brightness_contrast.h"

#include "editor/real_lanes.h"
#include "editor/walks.h"

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
    QVR_INLINE Value operator()(Value value) const
    {
        return (value - 127.0) * factor + 127.0;
    }
    double factor;
};

struct AbsoluteBrightness
{
    template <class Value>
    QVR_INLINE Value operator()(Value value) const
    {
        return value + brightness;
    }
    double brightness;
};

struct Line
{
    template <class Value>
    QVR_INLINE Value operator()(Value value) const
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
    QVR_INLINE Value operator()(Value value) const
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

/// Whether every channel value gives a value that fits 32 bits when truncated. Every step of a formula is
/// monotonic in the channel, so its two ends bound it, and a NaN or infinity inside shows at an end.
template <class Formula>
bool alwaysFitsInt32(const PerChannel<Formula>& formulas)
{
    const Formula channels[] = {formulas.red, formulas.green, formulas.blue};
    for (const Formula& formula : channels)
        if (!fitsInt32(formula(0.0)) || !fitsInt32(formula(255.0)))
            return false;
    return true;
}

/// A pixel's three values truncated to integers; `truncate` is the conversion.
template <class PixelVector, class Formula, class Truncate>
QVR_INLINE inline auto truncatedValues(PixelVector pixels, const PerChannel<Formula>& formulas,
                                       const Truncate& truncate)
{
    using Lane = LaneOf<PixelVector>;
    return UnclampedChannels<Lane>{truncate(formulas.red(toDoubles<Lane>(pixels.red()))),
                                   truncate(formulas.green(toDoubles<Lane>(pixels.green()))),
                                   truncate(formulas.blue(toDoubles<Lane>(pixels.blue())))};
}

/// A new picture from the truncated values; `finish` turns them into what is stored.
template <class Formula, class Finish>
REALpictureStruct* mapTruncated(REALpictureStruct* picture, const PerChannel<Formula>& formulas,
                                const Finish& finish)
{
    // In the common case nothing has to be looked at before the conversion.
    if (alwaysFitsInt32(formulas))
        return mapPicture(picture, [formulas, finish](auto pixels) QVR_INLINE {
            using Lane = LaneOf<decltype(pixels)>;
            return finish(truncatedValues(
                pixels, formulas, [](auto values) QVR_INLINE { return truncateFitting<Lane>(values); }));
        });
    return mapPicture(picture, [formulas, finish](auto pixels) QVR_INLINE {
        using Lane = LaneOf<decltype(pixels)>;
        return finish(truncatedValues(pixels, formulas,
                                      [](auto values) QVR_INLINE { return truncateAny<Lane>(values); }));
    });
}

template <class Formula>
REALpictureStruct* mapClamped(REALpictureStruct* picture, const PerChannel<Formula>& formulas)
{
    return mapTruncated(picture, formulas, [](auto values) QVR_INLINE { return values; });
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
    return mapTruncated(picture, lines, [](auto values) QVR_INLINE { return values.lowBytes(); });
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
