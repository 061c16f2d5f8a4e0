/// \file
/// Every function that the host hands out, declared once. The text beside a member is the name asked for.
#pragma once

#include "abi/host_abi.h"
#include "system/entry_point.h"

namespace qvr
{

/// The host's resolver, as given to `REALPluginMain`; null before.
extern REALresolver gResolver;

/// The host's version, for example 2013.03; 0 when the host does not tell.
extern double hostVersion;

/// Where host functions come from: the host's resolver.
struct HostResolver
{
    using Name = const char*;
    static void* find(Name name);
};

template <class Signature>
using HostFunction = EntryPoint<HostResolver, Signature>;

/// The host's functions. Results "with a reference" are owned by the caller, who gives them back with
/// `REALUnlockObject` (strings: `REALUnlockString`).
struct HostFunctions
{
    // Registration
    HostFunction<void(int32_t layoutVersion)> RegisterPluginVersion{"RegisterPluginVersion"};
    HostFunction<double()> REALGetRBVersion{"REALGetRBVersion"};
    HostFunction<void(REALclassDefinition*)> PluginRegisterClass{"PluginRegisterClass"};
    HostFunction<void(REALclassDefinition*)> PluginRegisterClassExtension{"PluginRegisterClassExtension"};
    HostFunction<void(REALmethodDefinition*)> PluginRegisterMethod{"PluginRegisterMethod"};

    // References
    HostFunction<void(REALobject)> REALLockObject{"REALLockObject"};
    HostFunction<void(REALobject)> REALUnlockObject{"REALUnlockObject"};

    // Pictures
    /// (width, height, depth); with a reference.
    HostFunction<REALpictureStruct*(int32_t, int32_t, int32_t)> REALNewPicture{"newPicture"};
    /// With a reference.
    HostFunction<REALgraphicsStruct*(REALpictureStruct*)> pluginPictureGraphicsGetter{
        "pluginPictureGraphicsGetter"};
    HostFunction<void(REALpictureStruct*, REALpictureDescription*)> lockPictureDescription{
        "lockPictureDescription"};
    /// (picture, description, wanted type)
    HostFunction<bool(REALpictureStruct*, REALpictureDescription*, int32_t)> REALLockPictureDescription{
        "REALLockPictureDescription"};
    HostFunction<void(REALpictureStruct*)> unlockPictureDescription{"unlockPictureDescription"};
    HostFunction<void(REALpictureStruct*)> REALPictureClearCache{"REALPictureClearCache"};
    /// (width, height, pixel type, buffer, row bytes); with a reference.
    HostFunction<REALpictureStruct*(int32_t, int32_t, int32_t, void*, int32_t)> REALBuildPictureFromBuffer{
        "REALBuildPictureFromBuffer"};
    /// (picture, create when there is none); with a reference.
    HostFunction<REALpictureStruct*(REALpictureStruct*, bool)> REALGetPictureMask{"REALGetPictureMask"};

    // Classes and properties
    /// The class of that name, or null; without a reference.
    HostFunction<void*(const char*)> REALGetClassRef{"pluginObjectType"};
    HostFunction<bool(REALobject, const char*, int32_t*)> REALGetPropValueInt{"REALGetPropValueInt"};
    HostFunction<bool(REALobject, const char*, int32_t)> REALSetPropValueInt{"REALSetPropValueInt"};
    HostFunction<bool(REALobject, const char*, uint32_t)> REALSetPropValueUInt32{"REALSetPropValueUInt32"};
    HostFunction<bool(REALobject, const char*, REALstringStruct*)> REALSetPropValueString{
        "REALSetPropValueString"};

    // Drawing and methods by declaration
    /// (graphics, x1, y1, x2, y2)
    HostFunction<void(REALgraphicsStruct*, int32_t, int32_t, int32_t, int32_t)> RuntimeGraphicsDrawLine{
        "RuntimeGraphicsDrawLine"};
    /// Only asked for, never called.
    HostFunction<void()> RuntimeGraphicsDrawPicture{"RuntimeGraphicsDrawPicture"};
    HostFunction<void*(REALobject, const char*)> REALLoadObjectMethod{"REALLoadObjectMethod"};
    /// (null, declaration)
    HostFunction<void*(void*, const char*)> REALLoadGlobalMethod{"REALLoadGlobalMethod"};

    // Exceptions
    /// With a reference.
    HostFunction<REALobjectStruct*(const char*)> PluginNewInstance{"PluginNewInstance"};
    /// Returns; the host raises when the handler returns.
    HostFunction<void(REALobjectStruct*)> RuntimeRaiseException{"RuntimeRaiseException"};

    // Strings
    /// (bytes, length); with a reference.
    HostFunction<REALstringStruct*(const void*, int32_t)> REALBuildString{"REALBuildString"};
    HostFunction<void(REALstringStruct*, uint32_t)> REALSetStringEncoding{"REALSetStringEncoding"};
    HostFunction<uint32_t(REALstringStruct*)> REALGetStringEncoding{"REALGetStringEncoding"};
    /// With a reference.
    HostFunction<REALstringStruct*(REALstringStruct*, uint32_t)> REALConvertString{"REALConvertString"};
    HostFunction<void(REALstringStruct*)> REALLockString{"REALLockString"};
    HostFunction<void(REALstringStruct*)> REALUnlockString{"REALUnlockString"};
    HostFunction<bool(REALstringStruct*, uint32_t, REALstringData*)> PluginGetStringData{
        "PluginGetStringData"};
    HostFunction<void(REALstringData*)> PluginDisposeStringData{"PluginDisposeStringData"};
    HostFunction<const char*(REALstringStruct*)> StringGetCString{"StringGetCString"};

    // Memory blocks
    /// Size in bytes, zero-filled; with a reference.
    HostFunction<REALmemoryBlockStruct*(int32_t)> REALNewMemoryBlock{"newMemoryBlock"};
    HostFunction<void*(REALmemoryBlockStruct*)> REALMemoryBlockGetPtr{"memoryBlockGetPtr"};
    HostFunction<int32_t(REALmemoryBlockStruct*)> REALMemoryBlockGetSize{"memoryBlockGetSize"};
};

static_assert(sizeof(HostFunctions) == 38 * sizeof(HostFunction<void()>),
              "38 functions are asked of the host");

/// The one table of host functions.
extern HostFunctions host;

/// An integer property of a host object; 0 when it cannot be read.
int32_t REALGetPropValueInt32(REALobject object, const char* name);

} // namespace qvr
