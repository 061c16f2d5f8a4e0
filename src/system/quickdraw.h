/// \file
/// QuickDraw, found by name in the system's ApplicationServices framework.
#pragma once

#include "abi/system_abi.h"
#include "system/entry_point.h"

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

#ifndef __APPLE__
// The compiler's constant strings refer to their class strongly, whatever a declaration says.
asm(".weak __CFConstantStringClassReference");
#endif
/// A constant CoreFoundation string, laid out by the compiler.
#define QVR_CFSTRING(text) __builtin___CFStringMakeConstantString(text)

/// The QuickDraw functions in use. A missing one does nothing and gives 0, false or null.
struct QuickDrawFunctions
{
    QuickDrawFunction<PixMapHandle(GWorldPtr)> GetGWorldPixMap{QVR_CFSTRING("GetGWorldPixMap")};
    QuickDrawFunction<int16_t(PixMapHandle)> GetPixDepth{QVR_CFSTRING("GetPixDepth")};
    QuickDrawFunction<Boolean(PixMapHandle)> LockPixels{QVR_CFSTRING("LockPixels")};
    QuickDrawFunction<void(PixMapHandle)> UnlockPixels{QVR_CFSTRING("UnlockPixels")};
    QuickDrawFunction<uint8_t*(PixMapHandle)> GetPixBaseAddr{QVR_CFSTRING("GetPixBaseAddr")};
    QuickDrawFunction<int32_t(PixMapHandle)> GetPixRowBytes{QVR_CFSTRING("GetPixRowBytes")};
    QuickDrawFunction<void(CGrafPtr* port, GDHandle* device)> GetGWorld{QVR_CFSTRING("GetGWorld")};
    QuickDrawFunction<void(CGrafPtr port, GDHandle device)> SetGWorld{QVR_CFSTRING("SetGWorld")};
    QuickDrawFunction<RgnHandle()> NewRgn{QVR_CFSTRING("NewRgn")};
    QuickDrawFunction<void(RgnHandle)> DisposeRgn{QVR_CFSTRING("DisposeRgn")};
    /// (rectangle, columns to the right, rows down, region that receives the uncovered band)
    QuickDrawFunction<void(const Rect*, int16_t, int16_t, RgnHandle)> ScrollRect{QVR_CFSTRING("ScrollRect")};
};

static_assert(sizeof(QuickDrawFunctions) == 11 * sizeof(QuickDrawFunction<void()>));

/// The one table of QuickDraw functions.
extern QuickDrawFunctions quickDraw;

} // namespace qvr
