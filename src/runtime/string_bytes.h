/// \file
/// The bytes of host strings, and the encodings that tell what they mean.
#pragma once

#include "runtime/references.h"

namespace qvr
{

/// Encoding of plain ASCII text.
constexpr uint32_t encodingASCII = 0x0600;
/// Bytes without a text encoding: no conversion is wanted.
constexpr uint32_t encodingNone = 0xFFFF;

/// Gives the bytes of a host string in the wanted encoding (`encodingNone`: as they are).
///
/// The host gives them where it has "PluginGetStringData", and takes them back with
/// "PluginDisposeStringData"; elsewhere they are copied to a block of the plug-in's own heap, for the caller
/// to free. On that way, with `encodingNone`, the block is allocated from `out->length` as it was before the
/// call, which the caller must therefore have set to the string's length. False: the bytes cannot be had,
/// `out` is unchanged.
bool REALGetStringData(REALstringStruct* string, uint32_t encoding, REALstringData* out);

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
    /// Whose the bytes are.
    enum class Owner : uint8_t
    {
        String,
        Host,
        Heap,
    };

    Owner owner = Owner::String;
    /// Holds the string while its own buffer is read.
    Reference<REALstringStruct> lockedString;
    REALstringData data{};
};

} // namespace qvr
