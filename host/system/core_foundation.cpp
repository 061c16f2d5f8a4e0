/// \file
/// The few CoreFoundation and Carbon functions that the plug-in imports, with their real names: the shared
/// object finds them among the symbols of the process, and the Mach-O loader in the table at the end.
#include "abi/system_abi.h"
#include "host/services/service_call.h"

#include <cstring>

namespace standin
{

namespace
{

constexpr OSErr noFolder = -43;

/// What an FSRef holds here, first of all.
constexpr std::uint32_t frameworksFolderMark = 0x4652414D;

constexpr const char* frameworkName = "ApplicationServices.framework";

std::string stringOf(Core& core, CFStringRef string, const char* service);

OSErr findFolder(Core& core, std::int16_t volume, OSType folder, Boolean create, FSRef* found)
{
    constexpr std::int16_t systemDisk = -32767;
    constexpr OSType frameworks = 0x6672616D; // 'fram'
    if (volume != systemDisk || folder != frameworks || create == 0)
        core.fault("FSFindFolder: asked for another folder than the system's frameworks, made if need be");
    if (!core.system.foldersFound)
        return noFolder;
    std::memset(found, 0, sizeof *found);
    std::memcpy(found, &frameworksFolderMark, sizeof frameworksFolderMark);
    return 0;
}

CFURLRef urlOfFolder(Core& core, CFAllocatorRef, const FSRef* folder)
{
    std::uint32_t mark = 0;
    std::memcpy(&mark, folder, sizeof mark);
    if (mark != frameworksFolderMark)
    {
        core.fault("CFURLCreateFromFSRef: the FSRef was never filled");
        return nullptr;
    }
    auto& url = core.make<UrlObject>();
    url.path = "/System/Library/Frameworks";
    return static_cast<CFURLRef>(url.handle());
}

CFURLRef appendComponent(Core& core, CFAllocatorRef, CFURLRef base, CFStringRef component,
                         Boolean isDirectory)
{
    if (isDirectory == 0)
        core.fault("CFURLCreateCopyAppendingPathComponent: a framework is a folder");
    const auto* folder = core.expect<UrlObject>(base, "CFURLCreateCopyAppendingPathComponent");
    const std::string name = stringOf(core, component, "CFURLCreateCopyAppendingPathComponent");
    if (folder == nullptr)
        return nullptr;
    const std::string path = folder->path + "/" + name;
    auto& url = core.make<UrlObject>();
    url.path = path;
    return static_cast<CFURLRef>(url.handle());
}

CFBundleRef createBundle(Core& core, CFAllocatorRef, CFURLRef location)
{
    const auto* url = core.expect<UrlObject>(location, "CFBundleCreate");
    if (url == nullptr || !core.system.bundlesCreated || !url->path.ends_with(frameworkName))
        return nullptr;
    return static_cast<CFBundleRef>(core.make<BundleObject>().handle());
}

Boolean loadExecutable(Core& core, CFBundleRef bundle)
{
    auto* object = core.expect<BundleObject>(bundle, "CFBundleLoadExecutable");
    if (object == nullptr || !core.system.executablesLoad)
        return 0;
    object->loaded = true;
    return 1;
}

void* findFunction(Core& core, CFBundleRef bundle, CFStringRef name)
{
    const auto* object = core.expect<BundleObject>(bundle, "CFBundleGetFunctionPointerForName");
    const std::string function = stringOf(core, name, "CFBundleGetFunctionPointerForName");
    if (object == nullptr || !object->loaded)
        return nullptr;
    return core.offer(function, findQuickDrawFunction);
}

void releaseObject(Core& core, CFTypeRef object)
{
    if (Object* target = core.expectAny(object, "CFRelease"))
        core.release(*target);
}

} // namespace

} // namespace standin

extern "C" {

#define STANDIN_EXPORT __attribute__((visibility("default")))

/// The class of constant strings; only its address counts.
STANDIN_EXPORT int __CFConstantStringClassReference[24] = {};

STANDIN_EXPORT CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef location)
{
    return standin::serve<"CFBundleCreate", standin::createBundle>(allocator, location);
}

STANDIN_EXPORT Boolean CFBundleLoadExecutable(CFBundleRef bundle)
{
    return standin::serve<"CFBundleLoadExecutable", standin::loadExecutable>(bundle);
}

STANDIN_EXPORT void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef name)
{
    return standin::serve<"CFBundleGetFunctionPointerForName", standin::findFunction>(bundle, name);
}

STANDIN_EXPORT CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* folder)
{
    return standin::serve<"CFURLCreateFromFSRef", standin::urlOfFolder>(allocator, folder);
}

STANDIN_EXPORT CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef base,
                                                              CFStringRef component, Boolean isDirectory)
{
    return standin::serve<"CFURLCreateCopyAppendingPathComponent", standin::appendComponent>(
        allocator, base, component, isDirectory);
}

STANDIN_EXPORT void CFRelease(CFTypeRef object)
{
    standin::serve<"CFRelease", standin::releaseObject>(object);
}

STANDIN_EXPORT OSErr FSFindFolder(std::int16_t volume, OSType folder, Boolean create, FSRef* found)
{
    return standin::serve<"FSFindFolder", standin::findFolder, standin::noFolder>(volume, folder, create,
                                                                                  found);
}

} // extern "C"

namespace standin
{

namespace
{

std::string stringOf(Core& core, CFStringRef string, const char* service)
{
    const std::optional<std::string> text = constantText(string);
    if (!text)
        core.fault(std::string(service) + ": its string is no constant CFString");
    return text.value_or("");
}

template <class Function>
void* addressOf(Function* function)
{
    return reinterpret_cast<void*>(function);
}

[[noreturn]] void bindLazily()
{
    std::fputs("stand-in host: every import is bound while loading; nothing is left to bind lazily\n",
               stderr);
    std::abort();
}

} // namespace

std::optional<std::string> constantText(CFStringRef string)
{
    const auto* constant = reinterpret_cast<const CFConstantString*>(string);
    if (constant == nullptr || constant->classReference != &__CFConstantStringClassReference ||
        constant->length < 0)
        return std::nullopt;
    return std::string(constant->bytes, static_cast<std::size_t>(constant->length));
}

void* findImport(std::string_view name)
{
    static const ServiceEntry table[] = {
        {"CFBundleCreate", addressOf(CFBundleCreate)},
        {"CFBundleLoadExecutable", addressOf(CFBundleLoadExecutable)},
        {"CFBundleGetFunctionPointerForName", addressOf(CFBundleGetFunctionPointerForName)},
        {"CFURLCreateFromFSRef", addressOf(CFURLCreateFromFSRef)},
        {"CFURLCreateCopyAppendingPathComponent", addressOf(CFURLCreateCopyAppendingPathComponent)},
        {"CFRelease", addressOf(CFRelease)},
        {"FSFindFolder", addressOf(FSFindFolder)},
        {"__CFConstantStringClassReference", &__CFConstantStringClassReference},
        {"memcpy", addressOf<void*(void*, const void*, std::size_t)>(std::memcpy)},
        {"memset", addressOf<void*(void*, int, std::size_t)>(std::memset)},
        {"strlen", addressOf<std::size_t(const char*)>(std::strlen)},
        {"dyld_stub_binder", addressOf(bindLazily)},
    };
    void* replacement = findReplacement(name);
    return replacement != nullptr ? replacement : findEntry(table, name);
}

} // namespace standin
