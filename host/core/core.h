/// \file
/// The state of one host, and what its services share.
#pragma once

#include "host/call_timer.h"
#include "host/host.h"
#include "host/loaders/plugin.h"
#include "host/objects/objects.h"

#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace standin
{

/// A block of the plug-in's heap, or string data that the host filled.
struct HeapBlock
{
    std::size_t size = 0;
    std::optional<GuardedBlock> guarded; ///< nothing: from the C library
    bool stringData = false;
    bool fromLoading = false;
};

/// The object that a method belongs to; global methods have none.
struct Self
{
    bool present;
    const void* handle;
};

class Slots;

class Core : public std::enable_shared_from_this<Core>
{
public:
    explicit Core(Options hostOptions);
    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;
    ~Core();

    /// Loads the plug-in and runs its entry point.
    void load();
    /// As if it had just been loaded, by a process that holds nothing.
    void rewind();

    /// The host that is calling the plug-in right now; the resolver and the services have no other way to
    /// find it.
    static Core& current();

    // Objects

    template <class Kind, class... Arguments>
    Kind& make(Arguments&&... arguments)
    {
        auto object = std::make_unique<Kind>(std::forward<Arguments>(arguments)...);
        Kind& result = *object;
        insert(std::move(object));
        return result;
    }
    /// Null when memory runs out.
    PictureObject* makePicture(int width, int height, Storage storage);
    MemoryBlockObject* makeMemoryBlock(std::int32_t size);
    GraphicsObject& makeGraphics(PictureObject& picture);

    /// The live object of a handle, or null; says nothing.
    Object* lookUp(const void* handle) const;
    template <class Kind>
    Kind* lookUpAs(const void* handle) const
    {
        return dynamic_cast<Kind*>(lookUp(handle));
    }
    /// The live object of a handle that the plug-in passed to `service`; null, and a fault in the ledger,
    /// when there is none or it is of another kind.
    template <class Kind>
    Kind* expect(const void* handle, const char* service)
    {
        auto* object = lookUpAs<Kind>(handle);
        if (object == nullptr)
            reportBadHandle(handle, service, Kind::kindName);
        return object;
    }
    Object* expectAny(const void* handle, const char* service);
    /// The picture of a GWorldPtr or PixMapHandle; null and a fault when there is none.
    PictureObject* expectAlias(const void* alias, const char* service);
    /// "picture#3", "nil", or the address.
    std::string nameOf(const void* handle) const;

    /// References of the plug-in.
    void retain(Object& object);
    void release(Object& object);
    /// References of the host's side.
    void retainHeld(Object& object);
    void releaseHeld(Object& object);

    /// Wraps an object: adds a reference, or takes over one that the plug-in handed out.
    template <class Wrapper>
    Wrapper wrap(Object* object)
    {
        return Wrapper(object == nullptr ? nullptr : shared_from_this(), object, false);
    }
    template <class Wrapper>
    Wrapper adopt(Object* object)
    {
        return Wrapper(object == nullptr ? nullptr : shared_from_this(), object, true);
    }
    template <class Wrapper>
    static auto target(const Wrapper& wrapper)
    {
        return wrapper.target;
    }

    // Calls into the plug-in

    Value callMethod(const std::vector<const RegisteredMethod*>& overloads, std::string_view name, Self self,
                     const Arguments& arguments);
    Value assignMethod(const std::vector<const RegisteredMethod*>& overloads, std::string_view name,
                       Self self, const Arguments& arguments, const Value& value);
    Value getProperty(InstanceObject& instance, std::string_view name);
    void setProperty(InstanceObject& instance, std::string_view name, const Value& value);
    InstanceObject& makeInstance(std::string_view className);
    /// Calls a function of the plug-in, and finishes what it left behind.
    Value callFunction(REALanyFunction function, const Slots& slots, Type type);
    /// Makes a value of what a call left in a register or a variable; handles bring their reference along.
    Value takeResult(Type type, std::uint32_t word, double number);
    /// Runs `call` as this host.
    template <class Call>
    auto inside(Call call);

    // Book-keeping

    void fault(std::string text);
    void log(std::string call);
    Ledger takeLedger() const;
    void* resolve(const char* name);
    /// Notes that the plug-in has asked for a function, and gives what `find(name)` does, unless the host is
    /// not to have it.
    void* offer(const std::string& function, const std::function<void*(std::string_view name)>& find);

    void* symbol(std::string_view name) const
    {
        return plugin->symbol(name);
    }

    void* allocate(std::size_t size, bool stringData);
    bool free(void* block, const char* caller);

    Options options;
    Faults faults;
    SystemSwitches system;
    PictureQuirks newPictureQuirks;
    Registered registered;
    std::vector<std::string> callLog;
    std::vector<std::string> lookups; ///< every name that was asked for, in the order of the first time
    std::map<std::string, int> lookupCounts;
    std::set<std::string> lacking; ///< those of them that were not to be had
    std::vector<std::string> faultTexts;
    std::exception_ptr pendingError;   ///< thrown by a service, to be thrown again outside of the plug-in
    ExceptionObject* raised = nullptr; ///< a held reference
    void* port = nullptr;              ///< QuickDraw's current port and device
    void* device = nullptr;
    std::intptr_t nextHostWord = 40;

private:
    void loadCopy();
    int nextPadding();
    void insert(std::unique_ptr<Object> object);
    void destroy(Object& object);
    /// Ends everything that the plug-in holds.
    void takeBack();
    void reportBadHandle(const void* handle, const char* service, const char* wanted);
    /// How many fields of instances hold each picture.
    std::map<const void*, int> fieldReferences() const;
    Value invoke(const RegisteredMethod& method, Self self, const Arguments& arguments,
                 const Value* assigned);
    void finishCall(Value& result);

    PixelPool pool;
    std::minstd_rand paddingOrder;
    std::unordered_map<const void*, std::unique_ptr<Object>> objects;
    std::unordered_map<const void*, PictureObject*> aliases;
    std::unordered_map<const void*, std::string> dead; ///< names of objects that went lately, by handle
    std::unordered_map<void*, HeapBlock> heap;
    std::map<std::string, int> serials;
    bool closing = false;
    std::string pluginPath;
    std::unique_ptr<Plugin> plugin;
    std::optional<Snapshot> loaded; ///< the plug-in before its entry point ran; for copies to be used again
    std::optional<Snapshot> fresh;  ///< the plug-in when its entry point had returned
};

/// Makes a host the current one for as long as it lives.
class CurrentHost
{
public:
    explicit CurrentHost(Core& core);
    ~CurrentHost();
    CurrentHost(const CurrentHost&) = delete;
    CurrentHost& operator=(const CurrentHost&) = delete;

private:
    Core* previous;
};

template <class Call>
auto Core::inside(Call call)
{
    const CurrentHost scope(*this);
    const CallTimer::Turn turn(CallTimer::Side::Plugin);
    return call();
}

} // namespace standin
