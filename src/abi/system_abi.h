/// \file
/// The few CoreFoundation, Carbon and QuickDraw types and signatures that the plug-in uses. The project
/// declares them itself, because it builds without the system's headers.
#pragma once

#include <stdint.h>

extern "C" {

typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFURL* CFURLRef;
typedef struct __CFBundle* CFBundleRef;

typedef uint8_t Boolean;
typedef int16_t OSErr;
typedef uint32_t OSType;

/// A file reference of the Carbon file manager.
struct FSRef
{
    uint8_t hidden[80];
};

/// A constant string as the compiler lays it out behind a CFStringRef.
struct CFConstantString
{
    const void* classReference;
    uint32_t flags;
    const char* bytes;
    int32_t length;
};

typedef struct OpaqueGrafPtr* CGrafPtr;
typedef CGrafPtr GWorldPtr;
typedef struct OpaqueGDHandle* GDHandle;
typedef struct OpaquePixMapHandle* PixMapHandle;
typedef struct OpaqueRgnHandle* RgnHandle;

/// A QuickDraw rectangle; right and bottom are exclusive.
struct Rect
{
    int16_t top;
    int16_t left;
    int16_t bottom;
    int16_t right;
};

} // extern "C"

namespace qvr
{

static_assert(sizeof(FSRef) == 80);
static_assert(sizeof(CFConstantString) == 16);
static_assert(sizeof(Rect) == 8);

} // namespace qvr
