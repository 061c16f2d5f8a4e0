/// \file
/// The bytes of a host string for the length of a scope.
#pragma once

#include "runtime/host_access.h"

namespace qvr
{

/// Gets at a string's bytes as they are stored, in the way of the host's version, and gives back what that
/// took.
class StringBytes
{
public:
    /// `string` stays the caller's; null is allowed and has no bytes.
    explicit StringBytes(REALstringStruct* string);
    ~StringBytes();
    StringBytes(const StringBytes&) = delete;
    StringBytes& operator=(const StringBytes&) = delete;

    /// Null when the bytes cannot be had.
    const uint8_t* bytes() const
    {
        return static_cast<const uint8_t*>(data.data);
    }
    int32_t length() const
    {
        return data.length;
    }

private:
    /// What must be given back.
    enum class Held : uint8_t
    {
        Nothing,
        StringLock,
        HostData,
        HeapBlock,
    };

    REALstringStruct* string;
    REALstringData data{};
    Held held = Held::Nothing;
};

} // namespace qvr
