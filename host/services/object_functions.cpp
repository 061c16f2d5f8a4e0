#include "host/services/host_functions.h"

#include "host/services/service_call.h"

#include <array>

namespace standin
{

namespace
{

/// Classes lie at different offsets, so that a handler that mixes them up finds nothing.
constexpr std::intptr_t hostWordStep = 24;

RegisteredClass readNextClass(Core& core, REALclassDefinition* definition)
{
    core.nextHostWord += hostWordStep;
    return readClass(definition, core.nextHostWord);
}

std::string_view applicationClass(Kind kind)
{
    switch (kind)
    {
    case Kind::Desktop:
        return "Application";
    case Kind::Console:
        return "ConsoleApplication";
    case Kind::Web:
        return "WebApplication";
    case Kind::Unknown:
        break;
    }
    return {};
}

template <class Handle>
Handle* handleOf(Object& object)
{
    return static_cast<Handle*>(object.handle());
}

} // namespace

void announceVersion(Core& core, std::int32_t layoutVersion)
{
    core.registered.announcedVersions.push_back(layoutVersion);
}

double hostVersion(Core& core)
{
    return core.options.version;
}

void registerClass(Core& core, REALclassDefinition* definition)
{
    core.registered.classes.push_back(readNextClass(core, definition));
}

void registerClassExtension(Core& core, REALclassDefinition* definition)
{
    core.registered.extensions.push_back(readNextClass(core, definition));
}

void registerMethod(Core& core, REALmethodDefinition* method)
{
    core.registered.globals.push_back(readMethod(*method));
}

void lockObject(Core& core, REALobject object)
{
    if (Object* target = core.expectAny(object, "REALLockObject"))
        core.retain(*target);
}

void unlockObject(Core& core, REALobject object)
{
    if (Object* target = core.expectAny(object, "REALUnlockObject"))
        core.release(*target);
}

void* classReference(Core& core, const char* className)
{
    static char reference;
    const std::string_view own = applicationClass(core.options.kind);
    return !own.empty() && sameName(own, className) ? &reference : nullptr;
}

bool getIntProperty(Core& core, REALobject object, const char* name, std::int32_t* value)
{
    const Object* target = core.expectAny(object, "REALGetPropValueInt");
    const auto* picture = dynamic_cast<const PictureObject*>(target);
    if (picture == nullptr || picture->quirks.noSizeProperties)
        return false;
    const bool isWidth = sameName(name, "Width");
    if (!isWidth && !sameName(name, "Height"))
        return false;
    *value = isWidth ? picture->describedWidth() : picture->describedHeight();
    return true;
}

bool setIntProperty(Core& core, REALobject object, const char* name, std::int32_t value)
{
    Object* target = core.expectAny(object, "REALSetPropValueInt");
    if (auto* graphics = dynamic_cast<GraphicsObject*>(target))
    {
        const bool isWidth = sameName(name, "PenWidth");
        if (!isWidth && !sameName(name, "PenHeight"))
            return false;
        (isWidth ? graphics->penWidth : graphics->penHeight) = value;
        return true;
    }
    auto* exception = dynamic_cast<ExceptionObject*>(target);
    if (exception == nullptr || !sameName(name, "ErrorNumber"))
        return false;
    exception->errorNumber = value;
    return true;
}

bool setUInt32Property(Core& core, REALobject object, const char* name, std::uint32_t value)
{
    auto* graphics = dynamic_cast<GraphicsObject*>(core.expectAny(object, "REALSetPropValueUInt32"));
    if (graphics == nullptr || !sameName(name, "ForeColor"))
        return false;
    graphics->foreColour = value;
    return true;
}

bool setStringProperty(Core& core, REALobject object, const char* name, REALstringStruct* value)
{
    auto* exception = dynamic_cast<ExceptionObject*>(core.expectAny(object, "REALSetPropValueString"));
    if (exception == nullptr || !sameName(name, "Message"))
        return false;
    auto* text = value == nullptr ? nullptr : core.expect<StringObject>(value, "REALSetPropValueString");
    if (text != nullptr)
        core.retainHeld(*text);
    if (StringObject* old = std::exchange(exception->message, text))
        core.releaseHeld(*old);
    return true;
}

void* loadObjectMethod(Core& core, REALobject object, const char* declaration)
{
    Object* target = core.expectAny(object, "REALLoadObjectMethod");
    return target == nullptr ? nullptr : findObjectMethod(core, target, declaration);
}

void* loadGlobalMethod(Core& core, void* null, const char* declaration)
{
    if (null != nullptr)
        core.fault("REALLoadGlobalMethod: its first argument is not nil");
    return findObjectMethod(core, nullptr, declaration);
}

REALobjectStruct* newException(Core& core, const char* className)
{
    static constexpr std::array<std::string_view, 2> classes{"NilObjectException", "RuntimeException"};
    const auto known = std::find_if(classes.begin(), classes.end(),
                                    [className](std::string_view name) { return sameName(name, className); });
    if (known == classes.end() || core.options.notInstantiable.contains(std::string(*known)))
        return nullptr;
    auto& exception = core.make<ExceptionObject>();
    exception.className = *known;
    return handleOf<REALobjectStruct>(exception);
}

void raiseException(Core& core, REALobjectStruct* exception)
{
    auto* object = core.expect<ExceptionObject>(exception, "RuntimeRaiseException");
    if (object == nullptr)
        return;
    if (core.raised != nullptr)
    {
        core.fault("RuntimeRaiseException: the call has raised an exception already");
        core.releaseHeld(*core.raised);
    }
    core.retainHeld(*object);
    core.raised = object;
}

REALmemoryBlockStruct* newMemoryBlock(Core& core, std::int32_t size)
{
    MemoryBlockObject* block = core.makeMemoryBlock(size);
    return block == nullptr ? nullptr : handleOf<REALmemoryBlockStruct>(*block);
}

void* memoryBlockPointer(Core& core, REALmemoryBlockStruct* block)
{
    const auto* object = core.expect<MemoryBlockObject>(block, "memoryBlockGetPtr");
    return object == nullptr || object->pointerHidden ? nullptr : object->block.data();
}

std::int32_t memoryBlockSize(Core& core, REALmemoryBlockStruct* block)
{
    const auto* object = core.expect<MemoryBlockObject>(block, "memoryBlockGetSize");
    if (object == nullptr)
        return 0;
    return object->reportedSize.value_or(static_cast<std::int32_t>(object->block.size()));
}

} // namespace standin
