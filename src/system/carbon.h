/// \file
/// The CoreFoundation and Carbon functions that the plug-in uses, reached through pointer variables for the
/// reason that c_library.h gives.
#pragma once

#include "abi/system_abi.h"

#pragma GCC visibility push(hidden)

namespace qvr::carbon
{

/// True when the process has all of the functions below. Always so on a Mac; elsewhere they are weak symbols
/// that the loading process may or may not define, and none may be called unless this is true.
bool available();

extern CFBundleRef (*CFBundleCreate)(CFAllocatorRef allocator, CFURLRef url);
extern Boolean (*CFBundleLoadExecutable)(CFBundleRef bundle);
extern void* (*CFBundleGetFunctionPointerForName)(CFBundleRef bundle, CFStringRef name);
extern CFURLRef (*CFURLCreateFromFSRef)(CFAllocatorRef allocator, const FSRef* folder);
extern CFURLRef (*CFURLCreateCopyAppendingPathComponent)(CFAllocatorRef allocator, CFURLRef url,
                                                         CFStringRef component, Boolean isDirectory);
extern void (*CFRelease)(CFTypeRef object);
extern OSErr (*FSFindFolder)(int16_t volume, OSType folder, Boolean create, FSRef* found);

} // namespace qvr::carbon

#pragma GCC visibility pop
