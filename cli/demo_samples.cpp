#include "cli/demo_samples.h"

#include <algorithm>
#include <cmath>

namespace cli
{

namespace
{

std::string listed(std::initializer_list<int> numbers)
{
    std::string text;
    for (const int number : numbers)
        text += (text.empty() ? "" : ", ") + std::to_string(number);
    return text;
}

/// Cold shadows, warm lights, strong contrast.
Colour film(Colour colour)
{
    constexpr double white = 255;
    constexpr Colour gain{1.12, 1.0, 0.82};
    constexpr Colour shadow{0, 12, 34};
    Colour result{};
    for (std::size_t channel = 0; channel < result.size(); ++channel)
    {
        const double level = colour[channel] / white;
        const double curved = level * level * (3 - 2 * level);
        result[channel] = std::min(white, curved * gain[channel] * white + shadow[channel] * (1 - level));
    }
    return result;
}

} // namespace

std::vector<Sample> demoSamples(int width, int height)
{
    const std::string middle = listed({width / 4, height / 4, width / 2, height / 2});
    const std::string corner = listed({0, 0, width / 8, height / 8});
    const std::string all = listed({0, 0, -1, -1});
    const std::string inversion = "Inversion";
    const std::string brightness = "Brightness and contrast";
    const std::string saturation = "Saturation";
    const std::string tests = "Region tests and colourfulness";
    const std::string colours = "Colour search and replace";
    const std::string statistics = "Colour statistics and transform";
    const std::string channels = "Channels and composition";
    const std::string masks = "Masks";
    const std::string scrolling = "Scrolling";
    const std::string search = "Sub-picture search";
    const std::string strings = "Binary strings";
    const std::string tinting = "Tinting";
    const std::string waves = "Waveforms";
    const std::string waveColours = ", &c88B5C4, &c274C5A, &c203F4E, 15, true)";

    return {
        {inversion, "InvertQVR", "Every channel c becomes 255 - c."},
        {inversion, "InvertQVR(" + middle + ")",
         "Only the middle is inverted. Pixels outside of the rectangle stay as the host makes new pictures: "
         "white here."},
        {inversion, "InvertGrayQVR",
         "On a page with coloured and grey cut-outs: the grey pixels and the white paper are inverted, "
         "colours stay.",
         "page"},
        {inversion, "InvertGrayQVR(" + middle + ")",
         "The same in the middle of the page only; the rest is not written.", "page"},

        {brightness, "ChangeBrightnessAbsoluteQVR(60)", "60 added to every channel; lights clip at 255."},
        {brightness, "ChangeBrightnessAbsoluteQVR(60, 0, -60)",
         "60 added to red and taken from blue: a warm cast."},
        {brightness, "ChangeBrightnessLinearQVR(100)",
         "Every channel moved towards 255 in proportion: shadows lift, nothing clips."},
        {brightness, "ChangeBrightnessLinearQVR(-60, 0, 90)",
         "Red moved towards 0 and blue towards 255: a cold cast."},
        {brightness, "ChangeContrastQVR(0.6)", "Every channel 1.6 times as far from 127."},
        {brightness, "ChangeContrastQVR(0.8, 0, -0.6)",
         "More contrast in red, the same in green, less in blue: dark parts turn blue, bright ones yellow."},
        {brightness, "ChangeContrastBrightnessAbsoluteQVR(0.4, -40)",
         "More contrast, then 40 taken from every channel."},
        {brightness, "ChangeContrastBrightnessAbsoluteQVR(0.5, 0.2, 0, 30, 0, -30)",
         "Contrast and brightness of their own for red, green and blue: strong warm reds."},
        {brightness, "ChangeContrastBrightnessLinearQVR(0.4, 60)",
         "More contrast, then every channel moved towards 255 in proportion."},
        {brightness, "ChangeContrastBrightnessLinearQVR(0.2, 0.2, 0.2, -40, 0, 60)",
         "A little more contrast, red moved down and blue moved up in proportion."},
        {brightness, "ChangeCustomQVR(-1, 255)", "c * a + b with a = -1 and b = 255: a negative."},

        {saturation, "ChangeSaturationQVR(150)", "Colours pushed away from their grey value."},
        {saturation, "ChangeSaturationQVR(-255)", "Colours pulled all the way to their grey value."},

        {tests, "ColornessQVR",
         "Share of the photograph's pixels that are neither nearly black nor nearly grey."},
        {tests, "isBlackQVR", "Is every pixel black?"},
        {tests, "isBlackQVR(" + corner + ")", "Is every pixel of the top left corner black?"},
        {tests, "isWhiteQVR", "Is every pixel of the page of cut-outs white?", "page"},
        {tests, "isWhiteQVR(" + corner + ")", "Is every pixel of the page's top left corner white?", "page"},
        {tests, "isGrayQVR(8)", "Do the channels of every pixel lie within 8 of each other?"},
        {tests, "isGrayQVR(0, " + listed({width / 2, 0, width, height}) + ")",
         "Is the right half of the page, with the grey cut-outs, grey?", "page"},

        {colours, "CountColorQVR(&cFFFFFF)", "Number of white pixels on the page of cut-outs, shown here.",
         "page", Shows::Receiver},
        {colours, "ReplaceColorQVR(&cFFFFFF, &c1E3A5F)", "White paper becomes navy blue.", "page"},
        {colours, "ExtractColorQVR(&cFFFFFF, &c202020, &cFFD166)",
         "White pixels become dark grey, all others amber: silhouettes of the cut-outs.", "page"},
        {colours, "ExtractColorRectangleMaskQVR",
         "Black rectangles over everything on the page that has colour; grey cut-outs do not count.", "page"},
        {colours, "ExtractColorRectangleMaskQVR(" + listed({0, 0, width / 4, height}) + ")",
         "Only colours in the page's left quarter are looked at.", "page"},

        {statistics, "CountColorsQVR(red, blue, green, count)",
         "How often each level occurs in red, green and blue. The block passed second counts green, the "
         "third blue."},
        {statistics, "TransformColorsQVR(@curve, @curve, @curve)",
         "An S-shaped tone curve of 256 bytes, the same for each channel."},
        {statistics, "TransformColorsQVR(@curve, @negative, @identity)",
         "Red through the S-curve, blue through an inverting table, green unchanged."},

        {channels, "ReplaceRedChannelQVR(@mirrored)", "Red comes from the mirrored photograph."},
        {channels, "ReplaceGreenChannelQVR(@mirrored)", "Green comes from the mirrored photograph."},
        {channels, "ReplaceBlueChannelQVR(@mirrored)", "Blue comes from the mirrored photograph."},
        {channels, "CombinePicturesQVR(@photo, @mirrored, @page)",
         "Red from the photograph, blue (the second argument) from its mirror image, green (the third) from "
         "the page of cut-outs.",
         ""},
        {channels, "MergePictureQVR(@photo, @mirrored)",
         "In each channel the larger value of the photograph and its mirror image.", ""},

        {masks, "HasMaskQVR", "Has the photograph a mask of its own?"},
        {masks, "HasMaskQVR", "Has the photograph with a disc as mask one? Shown as the host would draw it.",
         "masked", Shows::ReceiverWithAlpha},
        {masks, "EmbeddedMaskQVR(false) = @disc",
         "A white disc on black written into the alpha bytes: the photograph is opaque inside of the disc "
         "only.",
         "photo", Shows::ReceiverWithAlpha, "cutout"},
        {masks, "EmbeddedMaskQVR(true)",
         "The alpha bytes of the picture before, read back and turned round: a black disc.", "cutout"},

        {scrolling, "ScrollHorizontalQVR(" + std::to_string(width / 5) + ", true, false)",
         "A fifth of the width to the right; what leaves on the right comes back on the left.", "photo",
         Shows::Receiver},
        {scrolling, "ScrollVerticalQVR(" + std::to_string(-height / 4) + ", false, false)",
         "A quarter of the height upwards without wrap-around; the band that is uncovered is erased to "
         "white.",
         "photo", Shows::Receiver},
        {scrolling, "ScrollQVR(" + listed({width / 5, height / 5}) + ", true, true)",
         "A picture with a disc as mask, moved right and down with wrap-around; the mask moves along.",
         "masked", Shows::ReceiverWithAlpha},

        {search, "FindPictureQVR(@crop, x, y)", "Where in the photograph is this piece of it?", "photo",
         Shows::Result, "", "crop"},

        {strings, "PicturetoBinaryStringQVR(@small)", "A small copy of the photograph as bytes.", "",
         Shows::Result, "data", "small"},
        {strings, "BinaryStringtoPictureQVR(@data)", "The picture that these bytes give back.", ""},

        {tinting, "TintPictureQVR(@photo, &c555555, &cFFFFFF)",
         "Each pixel reduced to the average of its channels.", ""},
        {tinting, "TintPictureQVR(@photo, &c4C961D, &cFFE0B0)",
         "Grey by the eye's sensitivity, then coloured with a warm paper tone.", ""},
        {tinting, "TintPictureQVR(@photo, &cFF0000, &c80C0FF)", "The red channel alone, in light blue.", ""},

        {waves, "RenderSamplesQVR(@sound, 0, 1, 1600, 400, 0" + waveColours,
         "A voice saying \"front center\": bars only, scaled to its peak.", ""},
        {waves, "RenderSamplesQVR(@sound, 0, 1, 1600, 400, 1" + waveColours,
         "With the plug-in's own anti-aliased outline, one pixel wide.", ""},
        {waves, "RenderSamplesQVR(@sound, 0, 12, 1600, 400, 3" + waveColours,
         "Smoothed over neighbouring columns, with an outline of three pixels drawn by the host.", ""},
    };
}

std::vector<FilterSample> demoFilters()
{
    const std::string sepia = "PictureSepiaQVR";
    const std::string table = "PictureLut3DQVR";
    return {
        {sepia, "As it comes: grey by weights of 0.299, 0.587 and 0.114.", {}},
        {sepia,
         "Sepia: 40 and 20 added to the grey level for red and green, 20 taken for blue.",
         {"SepiaRed=40", "SepiaGreen=20", "SepiaBlue=-20"}},
        {sepia,
         "Without the green channel, whose weight the property FactorBlue holds, and with a weight of 0.8 "
         "for red.",
         {"FactorRed=0.8", "FactorBlue=0.0"}},
        {table,
         "The table that maps every colour to itself, to within one level.",
         {},
         [](Colour colour) { return colour; },
         "17 * r, 17 * g, 17 * b"},
        {table,
         "A film look: cold shadows, warm lights, strong contrast.",
         {},
         film,
         "film(17 * r, 17 * g, 17 * b)"},
        {table,
         "Red and blue exchanged.",
         {},
         [](Colour colour) {
             return Colour{colour[2], colour[1], colour[0]};
         },
         "17 * b, 17 * g, 17 * r"},
    };
}

} // namespace cli
