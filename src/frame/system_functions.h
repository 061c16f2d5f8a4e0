/// \file
/// QuickDraw, found by name in the system's ApplicationServices framework.
#pragma once

#include "abi/system_abi.h"
#include "frame/entry_point.h"

namespace qvr
{

/// Loads `name` (for example "ApplicationServices.framework") from the system's frameworks folder.
///
/// The bundle carries a reference for the caller; null when the folder, the bundle or its executable cannot
/// be had.
CFBundleRef LoadFrameworkBundle(CFStringRef name);

/// Where QuickDraw comes from: the ApplicationServices framework, loaded when a function is first wanted and
/// kept for the life of the process.
struct ApplicationServices
{
    /// A constant string. The compiler makes it an untyped pointer, so that no start-up code is needed.
    using Name = CFTypeRef;
    static void* find(Name name);
};

template <class Signature>
using QuickDrawFunction = EntryPoint<ApplicationServices, Signature>;

#define QVR_CFSTRING(text) __builtin___CFStringMakeConstantString(text)
#define QVR_QUICKDRAW(name)                                                                                  \
    name                                                                                                     \
    {                                                                                                        \
        QVR_CFSTRING(#name)                                                                                  \
    }

/// The QuickDraw functions in use. A missing one does nothing and gives 0, false or null.
struct QuickDrawFunctions
{
    QuickDrawFunction<PixMapHandle(GWorldPtr)> QVR_QUICKDRAW(GetGWorldPixMap);
    QuickDrawFunction<int16_t(PixMapHandle)> QVR_QUICKDRAW(GetPixDepth);
    QuickDrawFunction<Boolean(PixMapHandle)> QVR_QUICKDRAW(LockPixels);
    QuickDrawFunction<void(PixMapHandle)> QVR_QUICKDRAW(UnlockPixels);
    QuickDrawFunction<uint8_t*(PixMapHandle)> QVR_QUICKDRAW(GetPixBaseAddr);
    QuickDrawFunction<int32_t(PixMapHandle)> QVR_QUICKDRAW(GetPixRowBytes);
    QuickDrawFunction<void(CGrafPtr* port, GDHandle* device)> QVR_QUICKDRAW(GetGWorld);
    QuickDrawFunction<void(CGrafPtr port, GDHandle device)> QVR_QUICKDRAW(SetGWorld);
    QuickDrawFunction<RgnHandle()> QVR_QUICKDRAW(NewRgn);
    QuickDrawFunction<void(RgnHandle)> QVR_QUICKDRAW(DisposeRgn);
    /// (rectangle, columns to the right, rows down, region that receives the uncovered band)
    QuickDrawFunction<void(const Rect*, int16_t, int16_t, RgnHandle)> QVR_QUICKDRAW(ScrollRect);
};

#undef QVR_QUICKDRAW

static_assert(sizeof(QuickDrawFunctions) == 11 * sizeof(QuickDrawFunction<void()>));

/// The one table of QuickDraw functions.
extern QuickDrawFunctions quickDraw;

} // namespace qvr
