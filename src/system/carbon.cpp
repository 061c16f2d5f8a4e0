#include "system/carbon.h"

#ifdef __APPLE__
#define QVR_SYSTEM_IMPORT
#else
#define QVR_SYSTEM_IMPORT __attribute__((weak))
#endif

extern "C" {

QVR_SYSTEM_IMPORT extern const int __CFConstantStringClassReference[];
QVR_SYSTEM_IMPORT CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef url);
QVR_SYSTEM_IMPORT Boolean CFBundleLoadExecutable(CFBundleRef bundle);
QVR_SYSTEM_IMPORT void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef name);
QVR_SYSTEM_IMPORT CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* folder);
QVR_SYSTEM_IMPORT CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url,
                                                                 CFStringRef component, Boolean isDirectory);
QVR_SYSTEM_IMPORT void CFRelease(CFTypeRef object);
QVR_SYSTEM_IMPORT OSErr FSFindFolder(int16_t volume, OSType folder, Boolean create, FSRef* found);

} // extern "C"

#undef QVR_SYSTEM_IMPORT

namespace qvr::carbon
{

CFBundleRef (*CFBundleCreate)(CFAllocatorRef, CFURLRef) = ::CFBundleCreate;
Boolean (*CFBundleLoadExecutable)(CFBundleRef) = ::CFBundleLoadExecutable;
void* (*CFBundleGetFunctionPointerForName)(CFBundleRef, CFStringRef) = ::CFBundleGetFunctionPointerForName;
CFURLRef (*CFURLCreateFromFSRef)(CFAllocatorRef, const FSRef*) = ::CFURLCreateFromFSRef;
CFURLRef (*CFURLCreateCopyAppendingPathComponent)(CFAllocatorRef, CFURLRef, CFStringRef,
                                                  Boolean) = ::CFURLCreateCopyAppendingPathComponent;
void (*CFRelease)(CFTypeRef) = ::CFRelease;
OSErr (*FSFindFolder)(int16_t, OSType, Boolean, FSRef*) = ::FSFindFolder;

namespace
{

/// Kept in a variable for the same reason as the functions.
const void* stringClass = __CFConstantStringClassReference;

} // namespace

bool available()
{
    return stringClass != nullptr && CFBundleCreate != nullptr && CFBundleLoadExecutable != nullptr &&
           CFBundleGetFunctionPointerForName != nullptr && CFURLCreateFromFSRef != nullptr &&
           CFURLCreateCopyAppendingPathComponent != nullptr && CFRelease != nullptr &&
           FSFindFolder != nullptr;
}

} // namespace qvr::carbon
