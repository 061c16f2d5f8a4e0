#include "runtime/string_bytes.h"

#include "system/c_library.h"

namespace qvr::stringBytes
{

namespace
{

/// From this host version on, strings are asked for their data; older hosts lend their own buffer.
constexpr double versionWithStringData = 2013.0;

} // namespace

} // namespace qvr::stringBytes

namespace qvr
{

StringBytes::StringBytes(REALstringStruct* source) : string(source)
{
    if (string == nullptr)
        return;
    if (hostVersion < stringBytes::versionWithStringData)
    {
        host.REALLockString(string);
        held = Held::StringLock;
        data.data = const_cast<char*>(host.StringGetCString(string));
        data.length = StringByteLength(string);
        return;
    }
    const bool hostGivesData = host.PluginGetStringData.available();
    if (!hostGivesData)
        data.length = StringByteLength(string);
    if (REALGetStringData(string, encodingNone, &data))
        held = hostGivesData && host.PluginDisposeStringData.available() ? Held::HostData : Held::HeapBlock;
    else
        data = {};
}

StringBytes::~StringBytes()
{
    if (held == Held::StringLock)
        host.REALUnlockString(string);
    else if (held == Held::HostData)
        host.PluginDisposeStringData(&data);
    else if (held == Held::HeapBlock)
        libc::free(data.data);
}

} // namespace qvr
