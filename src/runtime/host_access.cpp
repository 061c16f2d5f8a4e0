#include "runtime/host_access.h"

#include "system/c_library.h"

namespace qvr
{

REALresolver gResolver = nullptr;
double hostVersion = 0;
constinit HostFunctions host;

void* HostResolver::find(Name name)
{
    return gResolver == nullptr ? nullptr : gResolver(name);
}

int32_t REALGetPropValueInt32(REALobject object, const char* name)
{
    int32_t value = 0;
    return host.REALGetPropValueInt(object, name, &value) ? value : 0;
}

void RaiseException(const char* className, const char* message, uint32_t errorNumber)
{
    constexpr size_t longestMessage = 2147483646;

    REALstringStruct* text = nullptr;
    const size_t length = message == nullptr ? 0 : libc::strlen(message);
    if (length >= 1 && length <= longestMessage)
    {
        text = host.REALBuildString(message, static_cast<int32_t>(length));
        if (text != nullptr)
            host.REALSetStringEncoding(text, encodingASCII);
    }

    REALobjectStruct* instance = host.PluginNewInstance(className);
    if (instance == nullptr)
        instance = host.PluginNewInstance("RuntimeException");
    if (const Reference<REALobjectStruct> exception{instance})
    {
        host.REALSetPropValueString(exception.get(), "Message", text);
        host.REALSetPropValueInt(exception.get(), "ErrorNumber", static_cast<int32_t>(errorNumber));
        host.RuntimeRaiseException(exception.get());
    }

    if (text != nullptr)
        host.REALUnlockString(text);
}

void RaiseNilObjectException(const char* message)
{
    RaiseException("NilObjectException", message, 0);
}

} // namespace qvr

namespace qvr::hostAccess
{

namespace
{

using LenBMethod = int32_t (*)(REALstringStruct*);

/// The host's global method for a string's length in bytes; null when it has none.
LenBMethod FindLenB()
{
    static LenBMethod lenB = nullptr;
    if (lenB == nullptr)
        lenB = reinterpret_cast<LenBMethod>(
            host.REALLoadGlobalMethod(nullptr, "LenB( s as string ) as integer"));
    return lenB;
}

/// Copies the bytes of `string` to a heap block with four zero bytes behind them. `capacity` is the block's
/// size less those four bytes; a copy that would not fit gives false, as does a failed allocation.
bool CopyStringBytes(REALstringStruct* string, int32_t capacity, uint32_t encoding, REALstringData* out)
{
    constexpr uint32_t terminator = 4;

    const int32_t length = StringByteLength(string);
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

} // namespace qvr::hostAccess

namespace qvr
{

int32_t StringByteLength(REALstringStruct* string)
{
    const hostAccess::LenBMethod lenB = hostAccess::FindLenB();
    return lenB == nullptr ? 0 : lenB(string);
}

bool REALGetStringData(REALstringStruct* string, uint32_t encoding, REALstringData* out)
{
    if (host.PluginGetStringData.available())
        return host.PluginGetStringData(string, encoding, out);
    if (!host.StringGetCString.available() || hostAccess::FindLenB() == nullptr || string == nullptr)
        return false;

    // Kept as the contract is: without conversion the block's size comes from the caller's record.
    if (encoding == encodingNone)
        return hostAccess::CopyStringBytes(string, out->length, encoding, out);
    if (host.REALGetStringEncoding(string) == encoding)
        return hostAccess::CopyStringBytes(string, StringByteLength(string), encoding, out);

    REALstringStruct* converted = host.REALConvertString(string, encoding);
    if (converted == nullptr)
        return false;
    const bool copied = hostAccess::CopyStringBytes(converted, StringByteLength(converted), encoding, out);
    host.REALUnlockString(converted);
    return copied;
}

} // namespace qvr
