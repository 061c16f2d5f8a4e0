#include "runtime/exceptions.h"

#include "runtime/references.h"
#include "runtime/string_bytes.h"
#include "system/c_library.h"

namespace qvr::exceptions
{

namespace
{

/// The text as a host string with a reference; null when it is empty or null, or cannot be had.
REALstringStruct* makeMessage(const char* text)
{
    constexpr size_t longestMessage = 2147483646;

    const size_t length = text == nullptr ? 0 : libc::strlen(text);
    if (length < 1 || length > longestMessage)
        return nullptr;
    REALstringStruct* const message = host.REALBuildString(text, static_cast<int32_t>(length));
    if (message != nullptr)
        host.REALSetStringEncoding(message, encodingASCII);
    return message;
}

} // namespace

} // namespace qvr::exceptions

namespace qvr
{

void RaiseException(const char* className, const char* message, uint32_t errorNumber)
{
    const Reference<REALstringStruct> text{exceptions::makeMessage(message)};
    REALobjectStruct* instance = host.PluginNewInstance(className);
    if (instance == nullptr)
        instance = host.PluginNewInstance("RuntimeException");
    const Reference<REALobjectStruct> exception{instance};
    if (!exception)
        return;
    host.REALSetPropValueString(exception.get(), "Message", text.get());
    host.REALSetPropValueInt(exception.get(), "ErrorNumber", static_cast<int32_t>(errorNumber));
    host.RuntimeRaiseException(exception.get());
}

void raiseNilObjectException(const char* message)
{
    RaiseException("NilObjectException", message, 0);
}

} // namespace qvr
