#include "runtime/string_bytes.h"

#include "system/c_library.h"

namespace qvr::stringBytes
{

namespace
{

/// From this host version on, strings are asked for their data; older hosts lend their own buffer.
constexpr double versionWithStringData = 2013.0;

/// The global methods of the host's language, found by their declaration.
struct GlobalMethods
{
    using Name = const char*;
    static void* find(Name declaration)
    {
        return host.REALLoadGlobalMethod(nullptr, declaration);
    }
};

/// The length of a string in bytes; 0 when the host lacks the method.
constinit EntryPoint<GlobalMethods, int32_t(REALstringStruct*)> lengthInBytes{
    "LenB( s as string ) as integer"};

/// Copies the bytes of `string` to a heap block with four zero bytes behind them. `capacity` is the block's
/// size less those four bytes; a copy that would not fit gives false, as does a failed allocation.
bool copyToHeap(REALstringStruct* string, int32_t capacity, uint32_t encoding, REALstringData* out)
{
    constexpr uint32_t terminator = 4;

    const int32_t length = lengthInBytes(string);
    const char* bytes = host.StringGetCString(string);
    if (bytes == nullptr || length < 0 || capacity < length)
        return false;
    auto* block = static_cast<uint8_t*>(libc::malloc(static_cast<uint32_t>(capacity) + terminator));
    if (block == nullptr)
        return false;
    libc::memcpy(block, bytes, static_cast<uint32_t>(length));
    libc::memset(block + length, 0, terminator);
    *out = {block, length, encoding};
    return true;
}

} // namespace

} // namespace qvr::stringBytes

namespace qvr
{

bool REALGetStringData(REALstringStruct* string, uint32_t encoding, REALstringData* out)
{
    using stringBytes::copyToHeap;
    using stringBytes::lengthInBytes;

    if (host.PluginGetStringData.available())
        return host.PluginGetStringData(string, encoding, out);
    if (!host.StringGetCString.available() || !lengthInBytes.available() || string == nullptr)
        return false;

    // Kept as the contract is: without conversion the block's size comes from the caller's record.
    if (encoding == encodingNone)
        return copyToHeap(string, out->length, encoding, out);
    if (host.REALGetStringEncoding(string) == encoding)
        return copyToHeap(string, lengthInBytes(string), encoding, out);

    const Reference<REALstringStruct> converted{host.REALConvertString(string, encoding)};
    return converted && copyToHeap(converted.get(), lengthInBytes(converted.get()), encoding, out);
}

StringBytes::StringBytes(REALstringStruct* string)
    : lockedString(hostVersion < stringBytes::versionWithStringData
                       ? Reference<REALstringStruct>::retain(string)
                       : nullptr)
{
    using stringBytes::lengthInBytes;

    if (lockedString)
        data = {const_cast<char*>(host.StringGetCString(string)), lengthInBytes(string), encodingNone};
    if (lockedString || string == nullptr)
        return;

    const bool hostGivesData = host.PluginGetStringData.available();
    if (!hostGivesData)
        data.length = lengthInBytes(string);
    if (REALGetStringData(string, encodingNone, &data))
        owner = hostGivesData && host.PluginDisposeStringData.available() ? Owner::Host : Owner::Heap;
    else
        data = {};
}

StringBytes::~StringBytes()
{
    if (owner == Owner::Host)
        host.PluginDisposeStringData(&data);
    else if (owner == Owner::Heap)
        libc::free(data.data);
}

} // namespace qvr
