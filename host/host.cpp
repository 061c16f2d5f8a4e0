#include "host/host.h"

#include "host/core/core.h"
#include "host/error.h"

#include <algorithm>

namespace standin
{

Host::Host(Options options) : core(std::make_shared<Core>(std::move(options)))
{
    core->load();
}

Host::~Host() = default;

void Host::rewind()
{
    core->rewind();
}

const Options& Host::options() const
{
    return core->options;
}

Picture Host::newPicture(int width, int height, std::optional<Storage> storage)
{
    PictureObject* picture =
        core->makePicture(width, height, storage.value_or(core->options.storageOfNewPictures()));
    if (picture == nullptr)
        throw Error("no memory for a picture of " + std::to_string(width) + " x " + std::to_string(height));
    return core->adopt<Picture>(picture);
}

MemoryBlock Host::newMemoryBlock(int size)
{
    MemoryBlockObject* block = core->makeMemoryBlock(size);
    if (block == nullptr)
        throw Error("no memory for a block of " + std::to_string(size) + " bytes");
    return core->adopt<MemoryBlock>(block);
}

MemoryBlock Host::newMemoryBlock(std::span<const std::uint8_t> bytes)
{
    MemoryBlock block = newMemoryBlock(static_cast<int>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), block.data());
    return block;
}

String Host::newString(std::string bytes, std::uint32_t encoding)
{
    return core->adopt<String>(&core->make<StringObject>(std::move(bytes), encoding));
}

Instance Host::newInstance(std::string_view className)
{
    return core->adopt<Instance>(&core->makeInstance(className));
}

Value Host::call(const Picture& picture, std::string_view method, const Arguments& arguments)
{
    return core->callMethod(core->registered.pictureMethods(method), method, {true, picture.handle()},
                            arguments);
}

Value Host::assign(const Picture& picture, std::string_view method, const Arguments& arguments,
                   const Value& value)
{
    return core->assignMethod(core->registered.pictureMethods(method), method, {true, picture.handle()},
                              arguments, value);
}

Value Host::callGlobal(std::string_view method, const Arguments& arguments)
{
    return core->callMethod(core->registered.globalMethods(method), method, {false, nullptr}, arguments);
}

const Registered& Host::registered() const
{
    return core->registered;
}

Ledger Host::ledger() const
{
    return core->takeLedger();
}

Faults& Host::faults()
{
    return core->faults;
}

SystemSwitches& Host::system()
{
    return core->system;
}

PictureQuirks& Host::newPictureQuirks()
{
    return core->newPictureQuirks;
}

void Host::setAbsent(const std::string& name, bool absent)
{
    if (absent)
        core->options.absent.insert(name);
    else
        core->options.absent.erase(name);
}

const std::vector<std::string>& Host::callLog() const
{
    return core->callLog;
}

void Host::clearCallLog()
{
    core->callLog.clear();
}

const std::vector<std::string>& Host::lookups() const
{
    return core->lookups;
}

bool Host::lacks(const std::string& name) const
{
    return core->lacking.contains(name);
}

int Host::lookups(const std::string& name) const
{
    const auto found = core->lookupCounts.find(name);
    return found == core->lookupCounts.end() ? 0 : found->second;
}

std::int32_t* Host::pluginVariable(const std::string& name)
{
    return static_cast<std::int32_t*>(core->symbol(name));
}

const RegisteredClass& Instance::definition() const
{
    return static_cast<InstanceObject&>(object()).definition;
}

Value Instance::get(std::string_view property) const
{
    return core->getProperty(static_cast<InstanceObject&>(object()), property);
}

void Instance::set(std::string_view property, const Value& value)
{
    core->setProperty(static_cast<InstanceObject&>(object()), property, value);
}

Value Instance::call(std::string_view method, const Arguments& arguments)
{
    return core->callMethod(methodsNamed(definition().methods, method), method, {true, handle()}, arguments);
}

Value Instance::assign(std::string_view method, const Arguments& arguments, const Value& value)
{
    return core->assignMethod(methodsNamed(definition().methods, method), method, {true, handle()}, arguments,
                              value);
}

std::uint8_t* Instance::data()
{
    return static_cast<InstanceObject&>(object()).data();
}

} // namespace standin
