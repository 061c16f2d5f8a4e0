#pragma once

#include "host/values/picture.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace standin
{

/// Encodings that the host's strings know.
enum Encoding : std::uint32_t
{
    encodingUtf16 = 0x0100,
    encodingAscii = 0x0600,
    encodingUtf8 = 0x08000100,
    encodingNone = 0xFFFF
};

/// An immutable host string; owns a reference.
class String : public Reference
{
public:
    String() = default;
    const std::string& bytes() const;
    std::uint32_t encoding() const;

private:
    friend class Core;
    using Reference::Reference;
};

/// A host memory block; owns a reference. A guard page begins right behind its last byte.
class MemoryBlock : public Reference
{
public:
    MemoryBlock() = default;
    std::uint8_t* data();
    const std::uint8_t* data() const;
    int size() const;
    std::span<std::uint8_t> bytes();
    std::span<const std::uint8_t> bytes() const;
    /// Entry `index` as 32-bit little-endian integer, for histograms.
    std::int32_t int32(int index) const;
    /// What "memoryBlockGetSize" is to answer from now on, whatever the true size; -1 is a size that is not
    /// known.
    void reportSize(int size);
    /// Makes "memoryBlockGetPtr" give null.
    void hidePointer();

private:
    friend class Core;
    using Reference::Reference;
};

/// The exception that a call raised.
struct RaisedException
{
    std::string className;
    std::string message;
    bool messageIsNull = true;               ///< "Message" was set to no string, or never
    std::uint32_t messageEncoding = 0;       ///< encoding of the message string
    std::optional<std::int32_t> errorNumber; ///< nothing when "ErrorNumber" was never set
};

class Value;

/// Stands for a caller's variable as argument of a byref parameter; made by `byref`.
struct VariableArgument
{
    Value* variable;
};

/// A value of the host's language: an argument, a result or a property. A result also tells about a raised
/// exception.
class Value
{
public:
    Value() = default;
    Value(std::nullptr_t)
    {
    }
    Value(bool value) : content(value)
    {
    }
    template <std::signed_integral Integer>
    Value(Integer value) : content(static_cast<std::int32_t>(value))
    {
    }
    /// A colour (&h00RRGGBB) or "UInt32".
    template <std::unsigned_integral Unsigned>
    Value(Unsigned value) : content(static_cast<std::uint32_t>(value))
    {
    }
    Value(double value) : content(value)
    {
    }
    Value(Picture value);
    Value(MemoryBlock value);
    Value(String value);
    /// Text: becomes a host string (UTF-8) when it is passed on.
    Value(const char* text) : content(std::string(text))
    {
    }
    Value(std::string text) : content(std::move(text))
    {
    }
    Value(VariableArgument variable) : content(variable)
    {
    }

    bool isNil() const
    {
        return std::holds_alternative<std::nullptr_t>(content);
    }
    /// Each gives the value, and throws Error when the value is of another type. Handles may be nil.
    bool boolean() const;
    std::int32_t integer() const;
    std::uint32_t colour() const;
    double number() const; ///< a double or an integer
    Picture picture() const;
    MemoryBlock memoryBlock() const;
    String string() const;

    /// The exception that the call raised whose result this is.
    const std::optional<RaisedException>& exception() const
    {
        return raised;
    }
    /// For messages: "42", "true", "picture#3 640 x 480", "nil".
    std::string describe() const;

    /// What a value can hold; text is not yet a host string.
    using Content = std::variant<std::nullptr_t, bool, std::int32_t, std::uint32_t, double, std::string,
                                 Picture, MemoryBlock, String, VariableArgument>;
    const Content& held() const
    {
        return content;
    }

private:
    friend class Core;

    Content content = nullptr;
    std::optional<RaisedException> raised;
};

/// Passes a variable to a byref parameter: the call reads it and writes it back. It must outlive the call.
inline VariableArgument byref(Value& variable)
{
    return {&variable};
}

using Arguments = std::vector<Value>;

} // namespace standin
