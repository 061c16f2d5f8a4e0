#include "host/services/host_functions.h"

#include "host/services/service_call.h"

#include <cstring>

namespace standin
{

namespace
{

constexpr char32_t asciiLimit = 0x80;
constexpr char32_t unknownCharacter = '?';

REALstringStruct* stringHandle(StringObject& string)
{
    return static_cast<REALstringStruct*>(string.handle());
}

/// Number of bytes that follow the first one of a UTF-8 sequence.
int continuationBytes(unsigned char first)
{
    return first < 0xC0 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
}

std::u32string decodeUtf8(const std::string& text)
{
    std::u32string result;
    for (std::size_t index = 0; index < text.size();)
    {
        const auto first = static_cast<unsigned char>(text[index++]);
        const int more = continuationBytes(first);
        char32_t point = more == 0 ? first : first & (0x3FU >> more);
        for (int count = 0; count < more && index < text.size(); ++count)
            point = point << 6 | (static_cast<unsigned char>(text[index++]) & 0x3FU);
        result += point;
    }
    return result;
}

std::u32string decodeUtf16(const std::string& text)
{
    std::u32string result;
    for (std::size_t index = 0; index + 1 < text.size(); index += 2)
    {
        const char32_t unit = static_cast<unsigned char>(text[index]) |
                              static_cast<char32_t>(static_cast<unsigned char>(text[index + 1])) << 8;
        const bool low = unit >= 0xDC00 && unit < 0xE000;
        if (low && !result.empty() && result.back() >= 0xD800 && result.back() < 0xDC00)
            result.back() = 0x10000 + ((result.back() - 0xD800) << 10) + (unit - 0xDC00);
        else
            result += unit;
    }
    return result;
}

std::string encodeAscii(const std::u32string& points)
{
    std::string result;
    for (const char32_t point : points)
        result += static_cast<char>(point < asciiLimit ? point : unknownCharacter);
    return result;
}

std::string encodeUtf8(const std::u32string& points)
{
    std::string result;
    for (const char32_t point : points)
    {
        const int more = point < asciiLimit ? 0 : point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
        constexpr unsigned char marks[] = {0, 0xC0, 0xE0, 0xF0};
        result += static_cast<char>(marks[more] | point >> (6 * more));
        for (int count = more - 1; count >= 0; --count)
            result += static_cast<char>(0x80 | (point >> (6 * count) & 0x3F));
    }
    return result;
}

std::string encodeUtf16(const std::u32string& points)
{
    std::string result;
    const auto add = [&result](char32_t unit) {
        result += static_cast<char>(unit);
        result += static_cast<char>(unit >> 8);
    };
    for (const char32_t point : points)
    {
        if (point >= 0x10000)
            add(0xD800 + ((point - 0x10000) >> 10));
        add(point < 0x10000 ? point : 0xDC00 + ((point - 0x10000) & 0x3FF));
    }
    return result;
}

} // namespace

StringObject::StringObject(std::string content, std::uint32_t contentEncoding)
    : text(std::move(content)),
      encoding(contentEncoding),
      cText(GuardedBlock::make(text.size() + 1))
{
    if (cText)
        std::memcpy(cText->data(), text.c_str(), text.size() + 1);
}

std::optional<std::string> convertText(const std::string& text, std::uint32_t from, std::uint32_t to)
{
    if (from == to || from == encodingNone || to == encodingNone)
        return text;
    std::u32string points;
    switch (from)
    {
    case encodingAscii:
    case encodingUtf8:
        points = decodeUtf8(text);
        break;
    case encodingUtf16:
        points = decodeUtf16(text);
        break;
    default:
        return std::nullopt;
    }
    switch (to)
    {
    case encodingAscii:
        return encodeAscii(points);
    case encodingUtf8:
        return encodeUtf8(points);
    case encodingUtf16:
        return encodeUtf16(points);
    default:
        return std::nullopt;
    }
}

REALstringStruct* buildString(Core& core, const void* bytes, std::int32_t length)
{
    if (length < 0 || (bytes == nullptr && length != 0))
        return nullptr;
    std::string text;
    if (length != 0)
        text.assign(static_cast<const char*>(bytes), static_cast<std::size_t>(length));
    return stringHandle(core.make<StringObject>(std::move(text), encodingUtf8));
}

void setEncoding(Core& core, REALstringStruct* string, std::uint32_t encoding)
{
    if (auto* object = core.expect<StringObject>(string, "REALSetStringEncoding"))
        object->encoding = encoding;
}

std::uint32_t getEncoding(Core& core, REALstringStruct* string)
{
    const auto* object = core.expect<StringObject>(string, "REALGetStringEncoding");
    return object == nullptr ? 0 : object->encoding;
}

REALstringStruct* convertString(Core& core, REALstringStruct* string, std::uint32_t encoding)
{
    const auto* object = core.expect<StringObject>(string, "REALConvertString");
    if (object == nullptr)
        return nullptr;
    const std::optional<std::string> text = convertText(object->text, object->encoding, encoding);
    return text ? stringHandle(core.make<StringObject>(*text, encoding)) : nullptr;
}

void lockString(Core& core, REALstringStruct* string)
{
    if (auto* object = core.expect<StringObject>(string, "REALLockString"))
        core.retain(*object);
}

void unlockString(Core& core, REALstringStruct* string)
{
    if (auto* object = core.expect<StringObject>(string, "REALUnlockString"))
        core.release(*object);
}

bool getStringData(Core& core, REALstringStruct* string, std::uint32_t encoding, REALstringData* data)
{
    const auto* object = core.expect<StringObject>(string, "PluginGetStringData");
    if (object == nullptr)
        return false;
    const std::optional<std::string> text = convertText(object->text, object->encoding, encoding);
    void* bytes = text ? core.allocate(text->size(), true) : nullptr;
    if (bytes == nullptr)
        return false;
    std::memcpy(bytes, text->data(), text->size());
    *data = {bytes, static_cast<std::int32_t>(text->size()), encoding};
    return true;
}

void disposeStringData(Core& core, REALstringData* data)
{
    if (core.free(data->data, "PluginDisposeStringData"))
        *data = {nullptr, 0, 0};
}

const char* cString(Core& core, REALstringStruct* string)
{
    const auto* object = core.expect<StringObject>(string, "StringGetCString");
    return object == nullptr || !object->cText ? nullptr
                                               : reinterpret_cast<const char*>(object->cText->data());
}

std::int32_t stringByteLength(Core& core, REALstringStruct* string)
{
    const auto* object = core.expect<StringObject>(string, "LenB");
    return object == nullptr ? 0 : static_cast<std::int32_t>(object->text.size());
}

} // namespace standin
