#include "globals/binary_string.h"

#include "editor/runs.h"
#include "runtime/string_bytes.h"
#include "system/heap_array.h"

namespace qvr::binaryString
{

namespace
{

constexpr uint32_t magic = 0x50504943; // "PPIC"
constexpr int32_t headerBytes = 40;
constexpr uint32_t writtenDepth = 32;

// Byte offsets of the header's numbers.
constexpr int32_t magicAt = 0;
constexpr int32_t lengthAt = 4;
constexpr int32_t widthAt = 8;
constexpr int32_t heightAt = 12;
constexpr int32_t depthAt = 16;
constexpr int32_t dataOffsetAt = 20;
constexpr int32_t readHeaderBytes = 24;

void storeBigEndian(uint8_t* address, uint32_t value)
{
    storeAt(address, __builtin_bswap32(value));
}

uint32_t loadBigEndian(const uint8_t* address)
{
    return __builtin_bswap32(loadFrom<uint32_t>(address));
}

int64_t pixelBytes(int32_t width, int32_t height)
{
    return static_cast<int64_t>(width) * height * 3;
}

/// What the header of a well-formed string says.
struct Contents
{
    int32_t width;
    int32_t height;
    const uint8_t* pixels;
};

/// Nothing that the string says of itself is believed unchecked.
bool parse(const uint8_t* bytes, int32_t length, Contents& contents)
{
    if (length < readHeaderBytes || loadBigEndian(bytes + magicAt) != magic ||
        loadBigEndian(bytes + lengthAt) != static_cast<uint32_t>(length))
        return false;
    contents.width = static_cast<int32_t>(loadBigEndian(bytes + widthAt));
    contents.height = static_cast<int32_t>(loadBigEndian(bytes + heightAt));
    if (!canBeMade(contents.width, contents.height))
        return false;
    const uint32_t offset = loadBigEndian(bytes + dataOffsetAt);
    if (offset + pixelBytes(contents.width, contents.height) > length)
        return false;
    contents.pixels = bytes + offset;
    return true;
}

} // namespace

REALstringStruct* PicturetoBinaryString(REALpictureStruct* picture)
{
    constexpr int64_t longestString = 2147483646;

    PictureReader reader;
    if (!reader.open(picture) || reader.width < 0 || reader.height < 0)
        return nullptr;
    const int64_t total = pixelBytes(reader.width, reader.height) + headerBytes;
    if (total < 1 || total > longestString)
        return nullptr;
    const auto size = static_cast<int32_t>(total);
    const HeapArray<uint8_t> bytes(size, Filling::Nothing);
    if (!bytes)
        return nullptr;

    libc::memset(bytes.get(), 0, headerBytes);
    storeBigEndian(&bytes[magicAt], magic);
    storeBigEndian(&bytes[lengthAt], static_cast<uint32_t>(size));
    storeBigEndian(&bytes[widthAt], static_cast<uint32_t>(reader.width));
    storeBigEndian(&bytes[heightAt], static_cast<uint32_t>(reader.height));
    storeBigEndian(&bytes[depthAt], writtenDepth);
    storeBigEndian(&bytes[dataOffsetAt], headerBytes);
    packPicture(reader, bytes.get() + headerBytes);

    REALstringStruct* const string = host.REALBuildString(bytes.get(), size);
    if (string != nullptr)
        host.REALSetStringEncoding(string, encodingNone);
    return string;
}

REALpictureStruct* BinaryStringtoPicture(REALstringStruct* data)
{
    const StringBytes string(data);
    Contents contents{};
    if (string.bytes() == nullptr || !parse(string.bytes(), string.length(), contents))
        return nullptr;
    PictureWriter writer;
    if (!writer.openNew(contents.width, contents.height))
        return nullptr;
    unpackPicture(writer, contents.pixels, contents.width, contents.height);
    return writer.RenderPictureWriter();
}

} // namespace qvr::binaryString
