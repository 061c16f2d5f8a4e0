#include "host/core/core.h"

#include "host/calls/cdecl_call.h"
#include "host/error.h"
#include "host/services/service_call.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if __has_feature(address_sanitizer)
#define STANDIN_HEAP_IS_WATCHED 1
#else
#define STANDIN_HEAP_IS_WATCHED 0
#endif

namespace standin
{

namespace
{

Core* currentCore = nullptr;

/// A real malloc aligns so.
constexpr std::size_t heapAlignment = 16;

/// What fresh heap memory is filled with, so that reading it unset shows.
constexpr int freshHeapFill = 0xA5;

void* resolveForCurrent(const char* name)
{
    return Core::current().resolve(name);
}

/// A loaded copy, and what its variables were before anything in it had run.
struct LoadedCopy
{
    std::unique_ptr<Plugin> plugin;
    Snapshot fresh;
};

/// The copies that no host uses at the moment, by path.
std::multimap<std::string, LoadedCopy>& idleCopies()
{
    static std::multimap<std::string, LoadedCopy> copies;
    return copies;
}

/// How many names of objects that are gone are kept for messages.
constexpr std::size_t mostDead = 256;

/// "PluginGetStringData" came with this version.
constexpr double firstStringDataVersion = 2013.0;

} // namespace

CurrentHost::CurrentHost(Core& core) : previous(currentCore)
{
    currentCore = &core;
}

CurrentHost::~CurrentHost()
{
    currentCore = previous;
}

Core& Core::current()
{
    if (currentCore == nullptr)
    {
        std::fputs("stand-in host: the plug-in called its host outside of any call\n", stderr);
        std::abort();
    }
    return *currentCore;
}

Core::Core(Options hostOptions)
    : options(std::move(hostOptions)),
      port(defaultPort()),
      device(defaultDevice())
{
    if (options.version < firstStringDataVersion)
        options.absent.insert({"PluginGetStringData", "PluginDisposeStringData"});
}

Core::~Core()
{
    closing = true;
    objects.clear();
    if (loaded)
        idleCopies().emplace(pluginPath, LoadedCopy{std::move(plugin), std::move(*loaded)});
    plugin.reset();
    for (const auto& [address, block] : heap)
        if (!block.guarded)
            std::free(address);
}

void Core::load()
{
    if (options.beforeEntry)
        options.beforeEntry(faults);
    inside([&] {
        loadCopy();
        Slots slots;
        slots.push(reinterpret_cast<const void*>(&resolveForCurrent));
        callForWord(reinterpret_cast<REALanyFunction>(plugin->entryPoint()), slots, options.stackSkew);
    });
    if (pendingError)
        std::rethrow_exception(std::exchange(pendingError, nullptr));
    for (auto& [address, block] : heap)
        block.fromLoading = true;
    fresh.emplace(*plugin);
}

void Core::rewind()
{
    fresh->restore();
    faults.clear();
    callLog.clear();
    lookups.clear();
    lookupCounts.clear();
    lacking.clear();
    takeBack();
    faultTexts.clear();
}

void Core::takeBack()
{
    std::erase_if(heap, [](const auto& entry) {
        const auto& [address, block] = entry;
        if (!block.fromLoading && !block.guarded)
            std::free(address);
        return !block.fromLoading;
    });
    const std::map<const void*, int> inFields = fieldReferences();
    std::vector<Object*> forsaken;
    for (const auto& [handle, object] : objects)
    {
        const auto fields = inFields.find(handle);
        object->references = object->held + (fields == inFields.end() ? 0 : fields->second);
        if (auto* picture = dynamic_cast<PictureObject*>(object.get()))
            picture->locks = picture->looseLocks = picture->failedLocks = picture->pixelLocks = 0;
        if (object->references == 0)
            forsaken.push_back(object.get());
    }
    for (Object* object : forsaken)
        destroy(*object);
}

void Core::loadCopy()
{
    pluginPath = options.plugin.empty() ? defaultPluginPath(options.artefact) : options.plugin;
    if (const auto idle = idleCopies().find(pluginPath); options.reuse && idle != idleCopies().end())
    {
        plugin = std::move(idle->second.plugin);
        loaded = std::move(idle->second.fresh);
        idleCopies().erase(idle);
        loaded->restore();
        return;
    }
    plugin = options.artefact == Artefact::MacBundle ? loadMachO(pluginPath) : loadElf(pluginPath);
    if (options.reuse)
        loaded.emplace(*plugin);
}

void* Core::resolve(const char* name)
{
    return offer(name == nullptr ? "" : name, findHostFunction);
}

void* Core::offer(const std::string& function, const std::function<void*(std::string_view name)>& find)
{
    if (lookupCounts[function]++ == 0)
        lookups.push_back(function);
    void* found = options.absent.contains(function) ? nullptr : find(function);
    if (found == nullptr)
        lacking.insert(function);
    return found;
}

void Core::insert(std::unique_ptr<Object> object)
{
    object->serial = ++serials[object->kind()];
    void* handle = object->handle();
    dead.erase(handle);
    objects[handle] = std::move(object);
}

int Core::nextPadding()
{
    const std::vector<int>& further = options.furtherPaddings;
    const std::size_t choice = further.empty() ? 0 : paddingOrder() % (further.size() + 1);
    return choice == 0 ? options.padding : further[choice - 1];
}

PictureObject* Core::makePicture(int width, int height, Storage storage)
{
    const RowLayout layout{options.memory, nextPadding(), options.freshFill};
    auto rows = PixelRows::make(width, height, storage, layout, pool);
    if (!rows)
        return nullptr;
    auto& picture = make<PictureObject>(width, height, storage, std::move(*rows));
    aliases[&picture.gworld] = &picture;
    aliases[&picture.pixMap] = &picture;
    return &picture;
}

MemoryBlockObject* Core::makeMemoryBlock(std::int32_t size)
{
    auto block = size < 0 ? std::nullopt : GuardedBlock::make(static_cast<std::size_t>(size));
    return block ? &make<MemoryBlockObject>(std::move(*block)) : nullptr;
}

GraphicsObject& Core::makeGraphics(PictureObject& picture)
{
    auto& graphics = make<GraphicsObject>();
    graphics.picture = &picture;
    retainHeld(picture);
    return graphics;
}

Object* Core::lookUp(const void* handle) const
{
    const auto found = objects.find(handle);
    return found == objects.end() ? nullptr : found->second.get();
}

Object* Core::expectAny(const void* handle, const char* service)
{
    Object* object = lookUp(handle);
    if (object == nullptr)
        reportBadHandle(handle, service, "object");
    return object;
}

PictureObject* Core::expectAlias(const void* alias, const char* service)
{
    const auto found = aliases.find(alias);
    if (found != aliases.end())
        return found->second;
    reportBadHandle(alias, service, "GWorld or pixel map");
    return nullptr;
}

void Core::reportBadHandle(const void* handle, const char* service, const char* wanted)
{
    const bool known = lookUp(handle) != nullptr;
    fault(std::string(service) + ": " + nameOf(handle) + " is " + (known ? "no " : "no live ") + wanted);
}

std::string Core::nameOf(const void* handle) const
{
    if (handle == nullptr)
        return "nil";
    if (const Object* object = lookUp(handle))
        return object->name();
    if (const auto alias = aliases.find(handle); alias != aliases.end())
        return alias->second->name();
    if (const auto gone = dead.find(handle); gone != dead.end())
        return gone->second + " (freed)";
    char address[16];
    std::snprintf(address, sizeof address, "0x%08" PRIxPTR, reinterpret_cast<std::uintptr_t>(handle));
    return address;
}

void Core::retain(Object& object)
{
    ++object.references;
}

void Core::release(Object& object)
{
    if (object.references <= object.held)
    {
        fault(object.name() + " was released more often than it was retained");
        return;
    }
    if (--object.references == 0)
        destroy(object);
}

void Core::retainHeld(Object& object)
{
    ++object.references;
    ++object.held;
}

void Core::releaseHeld(Object& object)
{
    --object.held;
    if (--object.references == 0)
        destroy(object);
}

void Core::destroy(Object& object)
{
    if (closing)
        return;
    if (auto* instance = dynamic_cast<InstanceObject*>(&object);
        instance != nullptr && instance->definition.destructor != nullptr)
    {
        // The destructor may use the instance once more, so it must not meet one without references.
        object.references = object.held = 1;
        Slots slots;
        slots.push(instance->handle());
        inside([&] { callForWord(instance->definition.destructor, slots, options.stackSkew); });
        if (!instance->block.intact())
            fault(object.name() + ": bytes outside of its data were written");
    }
    if (auto* picture = dynamic_cast<PictureObject*>(&object))
    {
        if (picture->locks != 0 || picture->failedLocks != 0 || picture->pixelLocks != 0)
            fault(picture->name() + " was freed while locked");
        if (!picture->rows.intact())
            fault(picture->name() + ": bytes outside of its pixels were written");
        if (picture->mask != nullptr)
            releaseHeld(*picture->mask);
        aliases.erase(&picture->gworld);
        aliases.erase(&picture->pixMap);
    }
    else if (auto* graphics = dynamic_cast<GraphicsObject*>(&object))
        releaseHeld(*graphics->picture);
    else if (auto* exception = dynamic_cast<ExceptionObject*>(&object))
    {
        if (exception->message != nullptr)
            releaseHeld(*exception->message);
    }
    else if (auto* memory = dynamic_cast<MemoryBlockObject*>(&object);
             memory != nullptr && !memory->block.intact())
        fault(memory->name() + ": bytes before it were written");

    void* handle = object.handle();
    if (dead.size() == mostDead)
        dead.clear();
    dead[handle] = object.name();
    objects.erase(handle);
}

void Core::fault(std::string text)
{
    faultTexts.push_back(std::move(text));
}

void Core::log(std::string call)
{
    callLog.push_back(std::move(call));
}

void* Core::allocate(std::size_t size, bool stringData)
{
    HeapBlock block;
    block.size = size;
    block.stringData = stringData;
    void* address = nullptr;
    if (options.memory == Memory::Guarded && !STANDIN_HEAP_IS_WATCHED)
    {
        block.guarded = GuardedBlock::make(size, stringData ? 1 : heapAlignment);
        if (block.guarded)
            address = block.guarded->data();
    }
    else
        address = std::malloc(std::max<std::size_t>(size, 1));
    if (address == nullptr)
        return nullptr;
    heap.insert_or_assign(address, std::move(block));
    return address;
}

bool Core::free(void* address, const char* caller)
{
    if (address == nullptr)
        return true;
    const auto found = heap.find(address);
    if (found == heap.end())
    {
        fault(std::string(caller) + ": " + nameOf(address) + " is no block of the heap, or was freed before");
        return false;
    }
    const bool guarded = found->second.guarded.has_value();
    if (guarded && !found->second.guarded->intact())
        fault(std::string(caller) + ": bytes outside of a block of " + std::to_string(found->second.size) +
              " bytes were written");
    heap.erase(found);
    if (!guarded)
        std::free(address);
    return true;
}

std::map<const void*, int> Core::fieldReferences() const
{
    std::map<const void*, int> references;
    for (const auto& [handle, object] : objects)
    {
        const auto* instance = dynamic_cast<const InstanceObject*>(object.get());
        if (instance == nullptr)
            continue;
        for (const RegisteredProperty& property : instance->definition.properties)
        {
            const void* field = nullptr;
            if (!property.isField() || !sameName(property.type, "Picture"))
                continue;
            std::memcpy(&field, instance->data() + property.parameter, sizeof field);
            ++references[field];
        }
    }
    return references;
}

Ledger Core::takeLedger() const
{
    Ledger ledger;
    ledger.faults = faultTexts;
    const auto outstanding = [&ledger](int& total, int count, const std::string& text) {
        total += count;
        if (count != 0)
            ledger.outstanding.push_back(text + (count == 1 ? "" : " x " + std::to_string(count)));
    };

    std::map<const void*, int> inFields = fieldReferences();
    for (const auto& [handle, object] : objects)
    {
        const std::string name = object->name();
        const bool ofSystem = dynamic_cast<const UrlObject*>(object.get()) != nullptr ||
                              dynamic_cast<const BundleObject*>(object.get()) != nullptr ||
                              dynamic_cast<const RegionObject*>(object.get()) != nullptr;
        const auto* bundle = dynamic_cast<const BundleObject*>(object.get());
        const int kept = bundle != nullptr && bundle->loaded ? 1 : 0;
        const int excess = object->references - object->held - kept - inFields[handle];
        outstanding(ofSystem ? ledger.systemObjects : ledger.references, excess,
                    name + ": reference not given back");

        const auto* picture = dynamic_cast<const PictureObject*>(object.get());
        if (picture == nullptr)
            continue;
        outstanding(ledger.descriptionLocks, picture->locks, name + ": description locked");
        outstanding(ledger.descriptionLocks, picture->failedLocks,
                    name + ": not unlocked after a failed lock");
        outstanding(ledger.pixelLocks, picture->pixelLocks, name + ": pixels locked");
        ledger.looseLocks += picture->looseLocks;
        if (!picture->rows.intact())
            ledger.faults.push_back(name + ": bytes outside of its pixels were written");
    }
    for (const auto& [address, block] : heap)
    {
        const std::string size = std::to_string(block.size) + " bytes";
        if (block.guarded && !block.guarded->intact())
            ledger.faults.push_back("heap: bytes outside of a block of " + size + " were written");
        if (block.stringData)
            outstanding(ledger.stringData, 1, "string data of " + size + " not disposed of");
        else if (!block.fromLoading)
            outstanding(ledger.heapBlocks, 1, "heap block of " + size + " not freed");
    }
    return ledger;
}

namespace
{

void* pluginMalloc(Core& core, std::size_t size)
{
    void* block = core.allocate(size, false);
    if (block != nullptr && core.options.memory == Memory::Guarded)
        std::memset(block, freshHeapFill, size);
    return block;
}

void* pluginCalloc(Core& core, std::size_t count, std::size_t size)
{
    std::size_t total = 0;
    if (__builtin_mul_overflow(count, size, &total))
        return nullptr;
    void* block = core.allocate(total, false);
    if (block != nullptr)
        std::memset(block, 0, total);
    return block;
}

void pluginFree(Core& core, void* block)
{
    core.free(block, "free");
}

} // namespace

void* findReplacement(std::string_view name)
{
    static const ServiceEntry table[] = {
        entry<"malloc", pluginMalloc>(),
        entry<"calloc", pluginCalloc>(),
        entry<"free", pluginFree>(),
    };
    return findEntry(table, name);
}

} // namespace standin
