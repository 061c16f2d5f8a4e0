/// \file
/// The names under which the plug-in finds the host's functions.
#include "host/services/host_functions.h"

#include "host/services/service_call.h"

namespace standin
{

void* findHostFunction(std::string_view name)
{
    static const ServiceEntry table[] = {
        entry<"RegisterPluginVersion", announceVersion>(),
        entry<"REALGetRBVersion", hostVersion>(),
        entry<"PluginRegisterClass", registerClass>(),
        entry<"PluginRegisterClassExtension", registerClassExtension>(),
        entry<"PluginRegisterMethod", registerMethod>(),
        entry<"REALLockObject", lockObject>(),
        entry<"REALUnlockObject", unlockObject>(),
        entry<"newPicture", newPicture>(),
        entry<"pluginPictureGraphicsGetter", pictureGraphics>(),
        entry<"lockPictureDescription", lockDescription>(),
        entry<"REALLockPictureDescription", lockDescriptionOfType, failToLock>(),
        entry<"unlockPictureDescription", unlockDescription>(),
        entry<"REALPictureClearCache", clearCache>(),
        entry<"REALBuildPictureFromBuffer", pictureFromBuffer>(),
        entry<"REALGetPictureMask", pictureMask>(),
        entry<"pluginObjectType", classReference>(),
        entry<"REALGetPropValueInt", getIntProperty>(),
        entry<"REALSetPropValueInt", setIntProperty>(),
        entry<"REALSetPropValueUInt32", setUInt32Property>(),
        entry<"REALSetPropValueString", setStringProperty>(),
        entry<"RuntimeGraphicsDrawLine", drawLine>(),
        entry<"REALLoadObjectMethod", loadObjectMethod>(),
        entry<"REALLoadGlobalMethod", loadGlobalMethod>(),
        entry<"PluginNewInstance", newException>(),
        entry<"RuntimeRaiseException", raiseException>(),
        entry<"REALBuildString", buildString>(),
        entry<"REALSetStringEncoding", setEncoding>(),
        entry<"REALGetStringEncoding", getEncoding>(),
        entry<"REALConvertString", convertString>(),
        entry<"REALLockString", lockString>(),
        entry<"REALUnlockString", unlockString>(),
        entry<"PluginGetStringData", getStringData>(),
        entry<"PluginDisposeStringData", disposeStringData>(),
        entry<"StringGetCString", cString>(),
        entry<"newMemoryBlock", newMemoryBlock>(),
        entry<"memoryBlockGetPtr", memoryBlockPointer>(),
        entry<"memoryBlockGetSize", memoryBlockSize>(),
    };
    return findEntry(table, name);
}

namespace
{

/// A method that is found by its declaration, and its short name in logs, faults and `Options::absent`.
struct DeclaredMethod
{
    const char* declaration;
    ServiceEntry entry;
};

void* findDeclared(Core& core, const DeclaredMethod& method, const char* declaration)
{
    if (declaration == nullptr || std::string_view(declaration) != method.declaration)
        return nullptr;
    return core.offer(method.entry.name, [&](std::string_view) { return method.entry.address; });
}

} // namespace

void* findObjectMethod(Core& core, Object* object, const char* declaration)
{
    static const DeclaredMethod lenB{"LenB( s as string ) as integer", entry<"LenB", stringByteLength>()};
    static const DeclaredMethod graphicsDrawPicture{
        "DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, "
        "sx as Integer = 0, sy as Integer = 0, sw as Integer = -10000, sh as Integer = -10000)",
        entry<"DrawPicture", drawPicture>()};
    if (object == nullptr)
        return findDeclared(core, lenB, declaration);
    if (dynamic_cast<GraphicsObject*>(object) != nullptr)
        return findDeclared(core, graphicsDrawPicture, declaration);
    return nullptr;
}

} // namespace standin
