#include "host/values/value.h"

#include "host/core/core.h"
#include "host/error.h"
#include "host/values/text.h"

#include <cstring>

namespace standin
{

const std::string& String::bytes() const
{
    return static_cast<StringObject&>(object()).text;
}

std::uint32_t String::encoding() const
{
    return static_cast<StringObject&>(object()).encoding;
}

std::uint8_t* MemoryBlock::data()
{
    return static_cast<MemoryBlockObject&>(object()).block.data();
}

const std::uint8_t* MemoryBlock::data() const
{
    return static_cast<MemoryBlockObject&>(object()).block.data();
}

int MemoryBlock::size() const
{
    return static_cast<int>(static_cast<MemoryBlockObject&>(object()).block.size());
}

std::span<std::uint8_t> MemoryBlock::bytes()
{
    return {data(), static_cast<std::size_t>(size())};
}

std::span<const std::uint8_t> MemoryBlock::bytes() const
{
    return {data(), static_cast<std::size_t>(size())};
}

std::int32_t MemoryBlock::int32(int index) const
{
    std::int32_t value = 0;
    if (index < 0 || index >= size() / static_cast<int>(sizeof value))
        throw Error("a block of " + std::to_string(size()) + " bytes has no 32-bit entry " +
                    std::to_string(index));
    std::memcpy(&value, data() + static_cast<std::size_t>(index) * sizeof value, sizeof value);
    return value;
}

void MemoryBlock::reportSize(int size)
{
    static_cast<MemoryBlockObject&>(object()).reportedSize = size;
}

void MemoryBlock::hidePointer()
{
    static_cast<MemoryBlockObject&>(object()).pointerHidden = true;
}

namespace
{

/// A handle without object is nil, whatever its type.
template <class Handle>
Value::Content handleContent(Handle handle)
{
    if (handle.isNil())
        return nullptr;
    return handle;
}

/// For messages.
struct Describe
{
    template <class Plain>
    std::string operator()(const Plain& value) const
    {
        return textOf(value);
    }
    std::string operator()(const Picture& value) const
    {
        return "picture of " + std::to_string(value.width()) + " x " + std::to_string(value.height());
    }
    std::string operator()(const MemoryBlock& value) const
    {
        return "memoryblock of " + std::to_string(value.size()) + " bytes";
    }
    std::string operator()(const String& value) const
    {
        return "string of " + std::to_string(value.bytes().size()) + " bytes";
    }
    std::string operator()(VariableArgument value) const
    {
        return "byref " + value.variable->describe();
    }
};

template <class Wanted>
Wanted wantedContent(const Value& value, const char* type)
{
    if (const auto* found = std::get_if<Wanted>(&value.held()))
        return *found;
    if constexpr (std::is_base_of_v<Reference, Wanted>)
        if (value.isNil())
            return {};
    throw Error(value.describe() + " is no " + type);
}

} // namespace

Value::Value(Picture value) : content(handleContent(std::move(value)))
{
}
Value::Value(MemoryBlock value) : content(handleContent(std::move(value)))
{
}
Value::Value(String value) : content(handleContent(std::move(value)))
{
}

bool Value::boolean() const
{
    return wantedContent<bool>(*this, "boolean");
}

std::int32_t Value::integer() const
{
    return wantedContent<std::int32_t>(*this, "integer");
}

std::uint32_t Value::colour() const
{
    return wantedContent<std::uint32_t>(*this, "color");
}

double Value::number() const
{
    if (const auto* value = std::get_if<std::int32_t>(&content))
        return *value;
    return wantedContent<double>(*this, "number");
}

Picture Value::picture() const
{
    return wantedContent<Picture>(*this, "picture");
}

MemoryBlock Value::memoryBlock() const
{
    return wantedContent<MemoryBlock>(*this, "memoryblock");
}

String Value::string() const
{
    return wantedContent<String>(*this, "string");
}

std::string Value::describe() const
{
    return std::visit(Describe(), content);
}

} // namespace standin
