/// \file
/// The objects behind the handles that the plug-in sees.
#pragma once

#include "abi/host_abi.h"
#include "abi/system_abi.h"
#include "host/calls/registry.h"
#include "host/objects/guarded_block.h"
#include "host/objects/pixel_rows.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace standin
{

/// A reference-counted object. Its handle is its own address, but for instances.
struct Object
{
    virtual ~Object() = default;
    /// The kind's name for messages, such as "picture".
    virtual const char* kind() const = 0;
    virtual void* handle()
    {
        return this;
    }
    /// "picture#3".
    std::string name() const
    {
        return kind() + ("#" + std::to_string(serial));
    }

    int serial = 0;
    int references = 1; ///< all references
    int held = 0;       ///< those of them that the host's side owns
};

struct PictureObject : Object
{
    static constexpr const char* kindName = "picture";
    const char* kind() const override
    {
        return kindName;
    }
    PictureObject(int pictureWidth, int pictureHeight, Storage pictureStorage, PixelRows pixelRows)
        : width(pictureWidth),
          height(pictureHeight),
          storage(pictureStorage),
          rows(std::move(pixelRows))
    {
    }

    int describedWidth() const
    {
        return quirks.describedWidth.value_or(width);
    }
    int describedHeight() const
    {
        return quirks.describedHeight.value_or(height);
    }
    std::uint8_t* at(int x, int y) const
    {
        return rows.row(y) + x * bytesPerPixel(storage);
    }

    int width;
    int height;
    Storage storage;
    PixelRows rows;
    PictureQuirks quirks;
    PictureObject* mask = nullptr; ///< a held reference
    int locks = 0;
    int looseLocks = 0;
    int failedLocks = 0; ///< those that the host wants unlocked all the same
    int pixelLocks = 0;
    int cacheClears = 0;
    char gworld = 0; ///< its address is the GWorldPtr
    char pixMap = 0; ///< its address is the PixMapHandle
};

struct GraphicsObject : Object
{
    static constexpr const char* kindName = "graphics";
    const char* kind() const override
    {
        return kindName;
    }

    PictureObject* picture = nullptr; ///< a held reference
    std::uint32_t foreColour = 0;
    std::int32_t penWidth = 1;
    std::int32_t penHeight = 1;
};

struct StringObject : Object
{
    static constexpr const char* kindName = "string";
    const char* kind() const override
    {
        return kindName;
    }
    /// Keeps the text with a zero behind it, and a guard page behind that.
    StringObject(std::string content, std::uint32_t contentEncoding);

    std::string text;
    std::uint32_t encoding;
    std::optional<GuardedBlock> cText;
};

struct MemoryBlockObject : Object
{
    static constexpr const char* kindName = "memoryblock";
    const char* kind() const override
    {
        return kindName;
    }
    explicit MemoryBlockObject(GuardedBlock memory) : block(std::move(memory))
    {
    }

    GuardedBlock block;
    std::optional<std::int32_t> reportedSize;
    bool pointerHidden = false;
};

struct ExceptionObject : Object
{
    static constexpr const char* kindName = "exception";
    const char* kind() const override
    {
        return kindName;
    }

    std::string className;
    StringObject* message = nullptr; ///< a held reference
    std::optional<std::int32_t> errorNumber;
};

struct InstanceObject : Object
{
    static constexpr const char* kindName = "instance";
    const char* kind() const override
    {
        return kindName;
    }
    void* handle() override
    {
        return block.data();
    }
    InstanceObject(const RegisteredClass& registeredClass, GuardedBlock memory)
        : definition(registeredClass),
          block(std::move(memory))
    {
    }
    /// The instance data, where the record's host word says it is.
    std::uint8_t* data() const
    {
        return block.data() + definition.hostWord;
    }

    const RegisteredClass& definition;
    GuardedBlock block;
};

/// A CoreFoundation URL: the frameworks folder, or something in it.
struct UrlObject : Object
{
    static constexpr const char* kindName = "CFURL";
    const char* kind() const override
    {
        return kindName;
    }

    std::string path;
};

struct BundleObject : Object
{
    static constexpr const char* kindName = "CFBundle";
    const char* kind() const override
    {
        return kindName;
    }

    bool loaded = false;
};

struct RegionObject : Object
{
    static constexpr const char* kindName = "region";
    const char* kind() const override
    {
        return kindName;
    }
};

} // namespace standin
