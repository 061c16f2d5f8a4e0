/// \file
/// What the plug-in does with host functions beyond calling one: guards, exceptions and string bytes.
#pragma once

#include "runtime/host_functions.h"

namespace qvr
{

/// Owns one reference to a host object and gives it back.
template <class Object>
class Reference
{
public:
    /// Takes over the caller's reference; null is allowed.
    explicit Reference(Object* owned) : object(owned)
    {
    }
    ~Reference()
    {
        if (object != nullptr)
            host.REALUnlockObject(object);
    }
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;

    /// The object, still owned by this guard.
    Object* get() const
    {
        return object;
    }
    explicit operator bool() const
    {
        return object != nullptr;
    }

    /// Adds a reference of its own to an object that somebody else holds.
    static Object* retain(Object* object)
    {
        if (object != nullptr)
            host.REALLockObject(object);
        return object;
    }

private:
    Object* object;
};

/// An integer property of a host object; 0 when it cannot be read.
int32_t REALGetPropValueInt32(REALobject object, const char* name);

/// Encoding of plain ASCII text.
constexpr uint32_t encodingASCII = 0x0600;
/// Bytes without a text encoding: no conversion is wanted.
constexpr uint32_t encodingNone = 0xFFFF;

/// Raises a host exception of class `className`, or a "RuntimeException" when the host cannot make one.
///
/// An empty or null message leaves the exception's "Message" a null string. The call returns; the host raises
/// when the handler returns, which therefore ends with its nil or false result.
void RaiseException(const char* className, const char* message, uint32_t errorNumber);

/// Raises the "NilObjectException" that a nil argument gives.
void RaiseNilObjectException(const char* message);

/// Gives the bytes of a host string in the wanted encoding (`encodingNone`: as they are).
///
/// Hosts before 2013.0 lack the function for it; the bytes are then copied to a block of the plug-in's own
/// heap. On that way, with `encodingNone`, the block is allocated from `out->length` as it was before the
/// call, which the caller must therefore have set to the string's length. False: the bytes cannot be had,
/// `out` is unchanged.
bool REALGetStringData(REALstringStruct* string, uint32_t encoding, REALstringData* out);

/// The length in bytes of a host string; 0 when the host lacks the method.
int32_t StringByteLength(REALstringStruct* string);

} // namespace qvr
