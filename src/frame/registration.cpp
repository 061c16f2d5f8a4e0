#include "frame/registration.h"

#include "filters/lut3d.h"
#include "filters/sepia.h"
#include "frame/record_adaptation.h"
#include "frame/table_rows.h"
#include "globals/binary_string.h"
#include "globals/combining.h"
#include "globals/tinting.h"
#include "globals/waveform.h"
#include "operations/brightness_contrast.h"
#include "operations/channel_replacement.h"
#include "operations/colour_search.h"
#include "operations/colour_statistics.h"
#include "operations/find_picture.h"
#include "operations/inversion.h"
#include "operations/masks.h"
#include "operations/region_tests.h"
#include "operations/saturation.h"
#include "operations/scrolling.h"
#include "runtime/host_functions.h"
#include "system/c_library.h"

namespace qvr::frame
{

int32_t CurrentREALControlVersion = 12;

namespace
{

/// The lowest layout with the wide records; below it every definition is converted.
constexpr int32_t firstWideLayout = 10;

/// No console flag: for the desktop only.
constexpr uint32_t desktopOnly = 0;

// clang-format off

/// The rows that every filter has, for data that has its `FilterData` at that byte, and then its own.
template <class... Own>
constexpr PropertyTable<6 + sizeof...(Own)> filterProperties(uint32_t flags, size_t data, const Own&... own)
{
    return {{
        fieldProperty(flags, "SourcePicture", "Picture", QVR_FIELD(FilterData, SourcePicture).after(data)),
        fieldProperty(flags, "DestinationPicture", "Picture", QVR_FIELD(FilterData, DestinationPicture).after(data)),
        fieldProperty(flags, "MaxX", "Integer", QVR_FIELD(FilterData, MaxX).after(data)),
        fieldProperty(flags, "MinX", "Integer", QVR_FIELD(FilterData, MinX).after(data)),
        fieldProperty(flags, "MaxY", "Integer", QVR_FIELD(FilterData, MaxY).after(data)),
        fieldProperty(flags, "MinY", "Integer", QVR_FIELD(FilterData, MinY).after(data)),
        own...,
    }};
}

// The rows "FactorBlue" and "FactorGreen" are bound crosswise on purpose.
PropertyTable sepiaProperties = filterProperties(
    desktopOnly, offsetof(sepia::PictureSepiaData, filter),
    fieldProperty(desktopOnly, "SepiaRed", "Integer", QVR_FIELD(sepia::PictureSepiaData, SepiaRed)),
    fieldProperty(desktopOnly, "SepiaGreen", "Integer", QVR_FIELD(sepia::PictureSepiaData, SepiaGreen)),
    fieldProperty(desktopOnly, "SepiaBlue", "Integer", QVR_FIELD(sepia::PictureSepiaData, SepiaBlue)),
    accessorProperty(desktopOnly, "FactorRed", "Double", sepia::GetFactorR, sepia::SetFactorR),
    accessorProperty(desktopOnly, "FactorBlue", "Double", sepia::GetFactorG, sepia::SetFactorG),
    accessorProperty(desktopOnly, "FactorGreen", "Double", sepia::GetFactorB, sepia::SetFactorB));

REALmethodDefinition sepiaMethods[] = {
    Filter::method(desktopOnly, sepia::PictureSepiaClassDestructor, "Close"),
    Filter::method(desktopOnly, sepia::Run, "Run as boolean"),
};

PropertyTable lut3dProperties = filterProperties(consoleFlag, offsetof(lut3d::Lut3DClassData, filter));

REALmethodDefinition lut3dMethods[] = {
    Filter::method(consoleFlag, lut3d::Lut3DClassDestructor, "Close"),
    Filter::method(consoleFlag, lut3d::Run, "Run as boolean"),
    Filter::assignableMethod(consoleFlag, lut3d::GetPMX, lut3d::SetPMX, "Table(r as UInt32, g as UInt32, b as UInt32, x as UInt32) as double"),
};

REALmethodDefinition pictureMethods[] = {
    Picture::method(desktopOnly, regionTests::ColornessQVR, "ColornessQVR(threshold as integer = 10) as double"),
    Picture::method(desktopOnly, scrolling::ScrollVerticalQVR, "ScrollVerticalQVR(delta as integer, wrap as boolean, scrollmask as boolean) as boolean"),
    Picture::method(desktopOnly, scrolling::ScrollHorizontalQVR, "ScrollHorizontalQVR(delta as integer, wrap as boolean, scrollmask as boolean) as boolean"),
    Picture::method(desktopOnly, scrolling::ScrollQVR, "ScrollQVR(deltaX as integer, deltaY as integer, wrap as boolean, scrollmask as boolean) as boolean"),
    Picture::method(consoleFlag, masks::PictureHasMask, "HasMaskQVR as boolean"),
    Picture::method(consoleFlag, brightnessContrast::ContrastAbsBrightnessPicture3, "ChangeContrastBrightnessAbsoluteQVR(ContrastRed as double, ContrastGreen as double, ContrastBlue as double, BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture"),
    Picture::method(consoleFlag, brightnessContrast::ContrastLinBrightnessPicture3, "ChangeContrastBrightnessLinearQVR(ContrastRed as double, ContrastGreen as double, ContrastBlue as double, BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture"),
    Picture::method(consoleFlag, brightnessContrast::ContrastAbsBrightnessPicture1, "ChangeContrastBrightnessAbsoluteQVR(Contrast as double, Brightness as double) as picture"),
    Picture::method(consoleFlag, brightnessContrast::ContrastLinBrightnessPicture1, "ChangeContrastBrightnessLinearQVR(Contrast as double, Brightness as double) as picture"),
    Picture::method(consoleFlag, brightnessContrast::AbsBrightnessPicture3, "ChangeBrightnessAbsoluteQVR(BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture"),
    Picture::method(consoleFlag, brightnessContrast::LinBrightnessPicture3, "ChangeBrightnessLinearQVR(BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture"),
    Picture::method(consoleFlag, brightnessContrast::AbsBrightnessPicture1, "ChangeBrightnessAbsoluteQVR(Brightness as double) as picture"),
    Picture::method(consoleFlag, brightnessContrast::LinBrightnessPicture1, "ChangeBrightnessLinearQVR(Brightness as double) as picture"),
    Picture::method(consoleFlag, brightnessContrast::ContrastPicture1, "ChangeContrastQVR(Contrast as double) as picture"),
    Picture::method(consoleFlag, brightnessContrast::ContrastPicture3, "ChangeContrastQVR(ContrastRed as double, ContrastGreen as double, ContrastBlue as double) as picture"),
    Picture::method(consoleFlag, brightnessContrast::TransformPicture, "ChangeCustomQVR(a as double, b as double) as picture"),
    Picture::method(consoleFlag, inversion::InvertPicture, "InvertQVR(left as integer,top as integer,width as integer,height as integer) as picture"),
    Picture::method(consoleFlag, inversion::InvertPicture2, "InvertQVR as picture"),
    Picture::method(consoleFlag, inversion::InvertGrayPicture, "InvertGrayQVR(left as integer,top as integer,width as integer,height as integer) as picture"),
    Picture::method(consoleFlag, inversion::InvertGrayPicture2, "InvertGrayQVR as picture"),
    Picture::method(consoleFlag, colourSearch::ExtractColorRectangleMaskQVR, "ExtractColorRectangleMaskQVR(left as integer,top as integer,width as integer,height as integer) as picture"),
    Picture::method(consoleFlag, colourSearch::ExtractColorRectangleMaskQVR2, "ExtractColorRectangleMaskQVR as picture"),
    Picture::assignableMethod(consoleFlag, masks::GetEmbededMask, masks::SetEmbededMask, "EmbeddedMaskQVR(swap as boolean) as picture"),
    Picture::method(consoleFlag, colourSearch::CountColorQVR, "CountColorQVR(col as color) as integer"),
    Picture::method(desktopOnly, colourStatistics::CountColorsQVR, "CountColorsQVR(byref red as memoryblock, byref blue as memoryblock, byref green as memoryblock, byref count as integer)"),
    Picture::method(desktopOnly, colourStatistics::TransformColorsQVR, "TransformColorsQVR(red as memoryblock, blue as memoryblock, green as memoryblock, dest as picture = nil) as picture"),
    Picture::method(desktopOnly, colourSearch::ReplaceColorQVR, "ReplaceColorQVR(SearchColor as color, ReplaceWithColor as color) as picture"),
    Picture::method(desktopOnly, colourSearch::ExtractColorQVR, "ExtractColorQVR(SearchColor as color, ReplaceWithColor as color, BackGroundColor as color) as picture"),
    Picture::method(consoleFlag, saturation::SaturationPicture, "ChangeSaturationQVR(Amount as integer) as picture"),
    Picture::method(consoleFlag, channelReplacement::ReplaceRedChannel, "ReplaceRedChannelQVR(RedChannel as picture) as picture"),
    Picture::method(consoleFlag, channelReplacement::ReplaceGreenChannel, "ReplaceGreenChannelQVR(GreenChannel as picture) as picture"),
    Picture::method(consoleFlag, channelReplacement::ReplaceBlueChannel, "ReplaceBlueChannelQVR(BlueChannel as picture) as picture"),
    Picture::method(consoleFlag, findPicture::FindPicture, "FindPictureQVR(pic as picture, byref x as integer, byref y as integer) as boolean"),
    Picture::method(consoleFlag, regionTests::isWhite2, "isWhiteQVR as boolean"),
    Picture::method(consoleFlag, regionTests::isWhite, "isWhiteQVR(left as integer,top as integer,width as integer,height as integer) as boolean"),
    Picture::method(consoleFlag, regionTests::isBlack2, "isBlackQVR as boolean"),
    Picture::method(consoleFlag, regionTests::isBlack, "isBlackQVR(left as integer,top as integer,width as integer,height as integer) as boolean"),
    Picture::method(consoleFlag, regionTests::isGray2, "isGrayQVR(tolerance as integer = 0) as boolean"),
    Picture::method(consoleFlag, regionTests::isGray, "isGrayQVR(tolerance as integer, left as integer,top as integer,width as integer,height as integer) as boolean"),
};

REALmethodDefinition globalMethods[] = {
    globalMethod(consoleFlag, binaryString::BinaryStringtoPicture, "BinaryStringtoPictureQVR(data as String) as Picture"),
    globalMethod(consoleFlag, binaryString::PicturetoBinaryString, "PicturetoBinaryStringQVR(p as picture) as string"),
    globalMethod(consoleFlag, combining::CombinePicturesQVR, "CombinePicturesQVR(red as picture, blue as picture, green as picture) as picture"),
    globalMethod(consoleFlag, combining::MergePicture, "MergePictureQVR(source1 as picture, source2 as picture) as picture"),
    globalMethod(consoleFlag, tinting::TintPicture, "TintPictureQVR(source as picture, GreyBase as color, SepiaBase as color) as picture"),
    globalMethod(consoleFlag, waveform::RenderSamples, "RenderSamplesQVR(Samples as memoryblock, SampleCount as integer, Smooth as integer, Width as integer, Height as integer, outlinewidth as integer, BackColor as color=&c88B5C4, ForeColor as color=&c274C5A, OutLineColor as color=&c203F4E, Bits as Integer = 8, AutoScale as boolean = false) as Picture"),
};

// clang-format on

REALclassDefinition pictureExtension = {
    .name = "Picture",
    .methods = pictureMethods,
    .methodCount = sizeof pictureMethods / sizeof *pictureMethods,
    .flags = newConsoleFlag,
};

using RegisterClass = HostFunction<void(REALclassDefinition*)>;

/// Registers a definition in the announced layout. The host keeps the address it is given, so the older form
/// takes the place of the static record.
void registerClass(REALclassDefinition* definition, RegisterClass& registerDefinition)
{
    if (CurrentREALControlVersion >= firstWideLayout)
        definition->version = CurrentREALControlVersion;
    else
    {
        REALclassDefinition* older = FixClass(definition);
        if (older == nullptr)
            return;
        libc::memcpy(definition, older, static_cast<size_t>(classDefinitionWords) * 4);
        libc::free(older);
    }
    registerDefinition(definition);
}

} // namespace

} // namespace qvr::frame

namespace qvr
{

REALclassDefinition sepia::pictureSepiaClass = frame::filterClass<sepia::PictureSepiaData>(
    frame::desktopOnly, "PictureSepiaQVR", sepia::PictureSepiaClassConstructor,
    sepia::PictureSepiaClassDestructor, frame::sepiaProperties, frame::sepiaMethods);

REALclassDefinition lut3d::pictureLut3DClass = frame::filterClass<lut3d::Lut3DClassData>(
    frame::newConsoleFlag, "PictureLut3DQVR", lut3d::Lut3DClassConstructor, lut3d::Lut3DClassDestructor,
    frame::lut3dProperties, frame::lut3dMethods);

} // namespace qvr

namespace qvr::frame
{

void registerCatalogue()
{
    FixConsoleFlags(&sepia::pictureSepiaClass);
    FixConsoleFlags(&lut3d::pictureLut3DClass);
    FixConsoleFlags(&pictureExtension);
    for (REALmethodDefinition& row : globalMethods)
        row.flags = fixedFlags(row.flags);

    REALclassDefinition* const filters[] = {&sepia::pictureSepiaClass, &lut3d::pictureLut3DClass};
    for (REALclassDefinition* filter : filters)
        registerClass(filter, host.PluginRegisterClass);
    registerClass(&pictureExtension, host.PluginRegisterClassExtension);
    for (REALmethodDefinition& row : globalMethods)
        host.PluginRegisterMethod(&row);
}

} // namespace qvr::frame
