/// \file
/// The QuickDraw functions that the plug-in takes from the ApplicationServices framework by name.
#include "abi/system_abi.h"
#include "host/services/service_call.h"

#include <algorithm>
#include <cstring>

namespace standin
{

namespace
{

char defaultPortTag;
char defaultDeviceTag;

/// What QuickDraw erases with: white, and all other bits set as well.
constexpr int background = 0xFF;

PixMapHandle pixMapOf(Core& core, GWorldPtr gworld)
{
    PictureObject* picture = core.expectAlias(gworld, "GetGWorldPixMap");
    if (picture == nullptr || picture->quirks.nullPixMap)
        return nullptr;
    if (picture->locks == 0)
        core.fault("GetGWorldPixMap: the description of " + picture->name() + " is not locked");
    return reinterpret_cast<PixMapHandle>(&picture->pixMap);
}

std::int16_t pixDepth(Core& core, PixMapHandle pixMap)
{
    const PictureObject* picture = core.expectAlias(pixMap, "GetPixDepth");
    if (picture == nullptr)
        return 0;
    return static_cast<std::int16_t>(picture->quirks.depth.value_or(traitsOf(picture->storage).depth));
}

Boolean lockPixels(Core& core, PixMapHandle pixMap)
{
    PictureObject* picture = core.expectAlias(pixMap, "LockPixels");
    if (picture == nullptr || picture->quirks.lockPixelsFails)
        return 0;
    ++picture->pixelLocks;
    return 1;
}

void unlockPixels(Core& core, PixMapHandle pixMap)
{
    PictureObject* picture = core.expectAlias(pixMap, "UnlockPixels");
    if (picture == nullptr)
        return;
    if (picture->pixelLocks == 0)
        core.fault("UnlockPixels: the pixels of " + picture->name() + " are not locked");
    else
        --picture->pixelLocks;
}

char* pixBaseAddress(Core& core, PixMapHandle pixMap)
{
    const PictureObject* picture = core.expectAlias(pixMap, "GetPixBaseAddr");
    if (picture == nullptr || picture->quirks.nullBaseAddress)
        return nullptr;
    if (picture->pixelLocks == 0)
        core.fault("GetPixBaseAddr: the pixels of " + picture->name() + " are not locked");
    return reinterpret_cast<char*>(picture->rows.base());
}

long pixRowBytes(Core& core, PixMapHandle pixMap)
{
    const PictureObject* picture = core.expectAlias(pixMap, "GetPixRowBytes");
    return picture == nullptr ? 0 : picture->rows.rowBytes();
}

void getGWorld(Core& core, CGrafPtr* port, GDHandle* device)
{
    *port = static_cast<CGrafPtr>(core.port);
    *device = static_cast<GDHandle>(core.device);
}

void setGWorld(Core& core, CGrafPtr port, GDHandle device)
{
    if (port != static_cast<CGrafPtr>(defaultPort()))
    {
        const PictureObject* picture = core.expectAlias(port, "SetGWorld");
        if (picture == nullptr)
            return;
        if (picture->locks == 0)
            core.fault("SetGWorld: the description of " + picture->name() + " is not locked");
    }
    core.port = port;
    core.device = device;
}

RgnHandle newRegion(Core& core)
{
    return static_cast<RgnHandle>(core.make<RegionObject>().handle());
}

void disposeRegion(Core& core, RgnHandle region)
{
    if (Object* object = core.expect<RegionObject>(region, "DisposeRgn"))
        core.release(*object);
}

void scrollRect(Core& core, const Rect* rectangle, std::int16_t dh, std::int16_t dv, RgnHandle update)
{
    core.expect<RegionObject>(update, "ScrollRect");
    if (core.port == defaultPort())
    {
        core.fault("ScrollRect: no picture's GWorld is the current port");
        return;
    }
    const PictureObject* picture = core.expectAlias(core.port, "ScrollRect");
    if (picture == nullptr)
        return;
    const int left = std::max<int>(rectangle->left, 0);
    const int right = std::min<int>(rectangle->right, picture->width);
    const int top = std::max<int>(rectangle->top, 0);
    const int bottom = std::min<int>(rectangle->bottom, picture->height);
    if (left >= right || top >= bottom)
        return;

    const int pixelSize = bytesPerPixel(picture->storage);
    const int keptColumns = std::max(right - left - std::abs(dh), 0);
    const auto keptBytes = static_cast<std::size_t>(keptColumns * pixelSize);
    const auto rowSize = static_cast<std::size_t>((right - left) * pixelSize);
    const auto moveRow = [&](int y) {
        std::uint8_t* target = picture->at(left, y);
        const int from = y - dv;
        if (keptColumns == 0 || from < top || from >= bottom)
        {
            std::memset(target, background, rowSize);
            return;
        }
        std::memmove(picture->at(left + std::max<int>(dh, 0), y),
                     picture->at(left + std::max<int>(-dh, 0), from), keptBytes);
        std::memset(dh > 0 ? target : target + keptBytes, background, rowSize - keptBytes);
    };
    // Rows are taken from the side that they move to, so that none is overwritten before it has moved.
    if (dv > 0)
        for (int y = bottom - 1; y >= top; --y)
            moveRow(y);
    else
        for (int y = top; y < bottom; ++y)
            moveRow(y);
}

} // namespace

void* defaultPort()
{
    return &defaultPortTag;
}

void* defaultDevice()
{
    return &defaultDeviceTag;
}

void* findQuickDrawFunction(std::string_view name)
{
    static const ServiceEntry table[] = {
        entry<"GetGWorldPixMap", pixMapOf>(),
        entry<"GetPixDepth", pixDepth>(),
        entry<"LockPixels", lockPixels>(),
        entry<"UnlockPixels", unlockPixels>(),
        entry<"GetPixBaseAddr", pixBaseAddress>(),
        entry<"GetPixRowBytes", pixRowBytes>(),
        entry<"GetGWorld", getGWorld>(),
        entry<"SetGWorld", setGWorld>(),
        entry<"NewRgn", newRegion>(),
        entry<"DisposeRgn", disposeRegion>(),
        entry<"ScrollRect", scrollRect>(),
    };
    return findEntry(table, name);
}

} // namespace standin
