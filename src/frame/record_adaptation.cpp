#include "frame/record_adaptation.h"

#include "frame/registration.h"
#include "runtime/host_functions.h"
#include "system/c_library.h"

namespace qvr::frame
{

namespace
{

constexpr double versionWithNewFlags = 2010.029;

constexpr uint32_t otherConsoleFlag = 0x80000;
constexpr uint32_t olderFlags = 0x1C0000;
constexpr uint32_t newOtherConsoleFlag = 8;

// Words of a row in the older layout; the words beyond are dropped.
constexpr int32_t olderPropertyWords = 10;
constexpr int32_t olderMethodWords = 4;
constexpr int32_t olderConstantWords = 3;

template <class Row>
void fixRowFlags(Row* rows, int32_t count)
{
    if (rows == nullptr)
        return;
    for (int32_t i = 0; i < count; ++i)
        rows[i].flags = fixedFlags(rows[i].flags);
}

/// The first `keptWords` words of every row, newly allocated.
template <class Row>
void* narrowedRows(const Row* rows, int32_t count, int32_t keptWords)
{
    constexpr int64_t largestBlock = 2147483647;
    const int64_t size = static_cast<int64_t>(count) * keptWords * 4;
    if (rows == nullptr || size < 1 || size > largestBlock)
        return nullptr;
    auto* narrowed = static_cast<uint32_t*>(libc::malloc(static_cast<size_t>(size)));
    if (narrowed == nullptr)
        return nullptr;
    for (int32_t i = 0; i < count; ++i)
        libc::memcpy(narrowed + i * keptWords, &rows[i], static_cast<size_t>(keptWords) * 4);
    return narrowed;
}

} // namespace

uint32_t fixedFlags(uint32_t flags)
{
    if (hostVersion >= versionWithNewFlags)
    {
        if ((flags & consoleFlag) != 0)
            flags |= newConsoleFlag;
        if ((flags & otherConsoleFlag) != 0)
            flags |= newOtherConsoleFlag;
    }
    return flags & ~olderFlags;
}

void FixConsoleFlags(REALclassDefinition* definition)
{
    definition->flags = fixedFlags(definition->flags);
    fixRowFlags(definition->methods, definition->methodCount);
    fixRowFlags(definition->sharedMethods, definition->sharedMethodCount);
    fixRowFlags(definition->properties, definition->propertyCount);
    fixRowFlags(definition->sharedProperties, definition->sharedPropertyCount);
}

void* FixProperties(const REALproperty* rows, int32_t count)
{
    return narrowedRows(rows, count, olderPropertyWords);
}

REALclassDefinition* FixClass(const REALclassDefinition* definition)
{
    auto* older = static_cast<REALclassDefinition*>(libc::calloc(classDefinitionWords, 4));
    if (older == nullptr)
        return nullptr;
    libc::memcpy(older, definition, static_cast<size_t>(classDefinitionWords) * 4);
    older->version = CurrentREALControlVersion;
    older->properties =
        static_cast<REALproperty*>(FixProperties(definition->properties, definition->propertyCount));
    older->methods = static_cast<REALmethodDefinition*>(
        narrowedRows(definition->methods, definition->methodCount, olderMethodWords));
    older->events = nullptr;
    older->eventCount = 0;
    older->bindings = nullptr;
    older->bindingCount = 0;
    older->constants = static_cast<REALconstant*>(
        narrowedRows(definition->constants, definition->constantCount, olderConstantWords));
    older->sharedProperties = static_cast<REALproperty*>(
        FixProperties(definition->sharedProperties, definition->sharedPropertyCount));
    older->sharedMethods = static_cast<REALmethodDefinition*>(
        narrowedRows(definition->sharedMethods, definition->sharedMethodCount, olderMethodWords));
    return older;
}

} // namespace qvr::frame
