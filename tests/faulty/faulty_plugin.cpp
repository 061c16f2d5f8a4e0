// A plug-in with a fault, for tests of those who look for faults. It loads the real one and stands between
// that and the host; PLANTED_FAULT names what goes wrong.
#include "abi/host_abi.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace
{

REALresolver hostResolver = nullptr;

bool isPlanted(const char* fault)
{
    const char* planted = std::getenv("PLANTED_FAULT");
    return planted != nullptr && std::strcmp(planted, fault) == 0;
}

template <class Function>
Function* ofHost(const char* name)
{
    return reinterpret_cast<Function*>(hostResolver(name));
}

void crash()
{
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
}

void hang()
{
    for (;;)
        usleep(1);
}

void leave()
{
    _exit(3);
}

void keepLocked(REALpictureStruct*)
{
}

void keepReference(REALobject)
{
}

REALmethodDefinition* methodNamed(REALclassDefinition& definition, const char* declaration)
{
    for (int row = 0; row < definition.methodCount; ++row)
        if (std::strcmp(definition.methods[row].declaration, declaration) == 0)
            return &definition.methods[row];
    return nullptr;
}

void registerExtension(REALclassDefinition* definition)
{
    REALmethodDefinition& method = *methodNamed(*definition, "HasMaskQVR as boolean");
    if (isPlanted("missing method"))
        --definition->methodCount;
    if (isPlanted("wrong flag"))
        method.flags = 0;
    if (isPlanted("crash"))
        method.handler = crash;
    if (isPlanted("hang"))
        method.handler = hang;
    if (isPlanted("exit"))
        method.handler = leave;
    ofHost<void(REALclassDefinition*)>("PluginRegisterClassExtension")(definition);
}

bool lockBitmap(REALpictureStruct* picture, REALpictureDescription* description, int32_t type)
{
    using Lock = bool(REALpictureStruct*, REALpictureDescription*, int32_t);
    if (!ofHost<Lock>("REALLockPictureDescription")(picture, description, type))
        return false;
    if (description->type != pictureMemoryBitmap)
        return true;
    uint8_t** rows = static_cast<uint8_t***>(description->data)[bitmapRowTableWord];
    if (isPlanted("stray write"))
        rows[0][description->width * 4] = 1;
    if (isPlanted("changed source"))
        rows[0][0] = static_cast<uint8_t>(rows[0][0] + 1);
    return true;
}

template <class Function>
void* addressOf(Function* function)
{
    return reinterpret_cast<void*>(function);
}

void* resolve(const char* name)
{
    const auto asksFor = [name](const char* function) { return std::strcmp(name, function) == 0; };
    if (asksFor("PluginRegisterClassExtension"))
        return addressOf(registerExtension);
    if (asksFor("REALLockPictureDescription"))
        return addressOf(lockBitmap);
    if (asksFor("unlockPictureDescription") && isPlanted("left locked"))
        return addressOf(keepLocked);
    if (asksFor("REALUnlockObject") && isPlanted("leak"))
        return addressOf(keepReference);
    if (asksFor("newPicture") && isPlanted("nil"))
        return nullptr;
    return hostResolver(name);
}

} // namespace

extern "C" __attribute__((visibility("default"))) void REALPluginMain(REALresolver resolver)
{
    if (isPlanted("abort"))
        std::abort();
    hostResolver = resolver;
    if (isPlanted("missing function"))
        resolver("functionOfAnotherHost");
    void* real = dlopen(REAL_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    if (real != nullptr)
        reinterpret_cast<void (*)(REALresolver)>(dlsym(real, "REALPluginMain"))(resolve);
}
