/// \file
/// The rows of the catalogue's tables. A row whose function or field has other types than its text says does
/// not compile.
#pragma once

#include "frame/declaration.h"

namespace qvr::frame
{

/// A type that a function template takes as it is and deduces nothing from.
template <class Type>
struct TakenAsItIs
{
    using Of = Type;
};
template <class Type>
using AsItIs = typename TakenAsItIs<Type>::Of;

/// The address of a handler, whatever its signature.
template <class Handler>
constexpr REALanyFunction address(Handler* handler)
{
    return reinterpret_cast<REALanyFunction>(handler);
}

/// Rows of the methods of objects with that handle, which every handler takes first.
template <class Self>
struct MethodsOf
{
    template <class Result, class... Arguments>
    static constexpr REALmethodDefinition method(uint32_t flags, Result (*handler)(Self*, Arguments...),
                                                 AsItIs<Declaration<Result(Arguments...)>> declaration)
    {
        return {address(handler), nullptr, declaration.text, flags, 0, nullptr};
    }

    /// The setter takes the same arguments, then the value.
    template <class Result, class... Arguments>
    static constexpr REALmethodDefinition
    assignableMethod(uint32_t flags, Result (*handler)(Self*, Arguments...),
                     AsItIs<void (*)(Self*, Arguments..., Result)> setter,
                     AsItIs<Declaration<Result(Arguments...)>> declaration)
    {
        return {address(handler), address(setter), declaration.text, flags, 0, nullptr};
    }
};

using Picture = MethodsOf<REALpictureStruct>;
using Filter = MethodsOf<REALobjectStruct>;

template <class Result, class... Arguments>
constexpr REALmethodDefinition globalMethod(uint32_t flags, Result (*handler)(Arguments...),
                                            AsItIs<Declaration<Result(Arguments...)>> declaration)
{
    return {address(handler), nullptr, declaration.text, flags, 0, nullptr};
}

/// Where a value of that type lies in the instance data.
template <class Value>
struct Field
{
    intptr_t offset;

    /// The same field of a record that lies behind so many bytes.
    constexpr Field after(size_t bytes) const
    {
        return {offset + static_cast<intptr_t>(bytes)};
    }
};

#define QVR_FIELD(record, member) (qvr::frame::Field<decltype(record::member)>{offsetof(record, member)})

/// A property whose field the host reads and writes by itself.
template <class Value>
constexpr REALproperty fieldProperty(uint32_t flags, const char* name, AsItIs<TypeName<Value>> type,
                                     Field<Value> field)
{
    constexpr intptr_t standardAccess = -1;
    const auto accessor = reinterpret_cast<REALanyFunction>(standardAccess);
    return {nullptr, name, type.text, flags, accessor, accessor, field.offset, {}};
}

/// A property whose value the host asks for and hands over, each time with the parameter of its row.
template <class Value>
constexpr REALproperty accessorProperty(uint32_t flags, const char* name, AsItIs<TypeName<Value>> type,
                                        Value (*getter)(REALobjectStruct*, long),
                                        AsItIs<void (*)(REALobjectStruct*, long, Value)> setter)
{
    return {nullptr, name, type.text, flags, address(getter), address(setter), 0, {}};
}

template <size_t Count>
struct PropertyTable
{
    REALproperty rows[Count];
};

/// A constructor or destructor.
using Lifecycle = void(REALobjectStruct* self);

/// The definition of a filter class; the host wants instance data in multiples of 16 bytes.
template <class Data, size_t Properties, size_t Methods>
constexpr REALclassDefinition filterClass(uint32_t flags, const char* name, Lifecycle* constructor,
                                          Lifecycle* destructor, PropertyTable<Properties>& properties,
                                          REALmethodDefinition (&methods)[Methods])
{
    return {
        .name = name,
        .dataSize = (sizeof(Data) + 15) / 16 * 16,
        .constructor = address(constructor),
        .destructor = address(destructor),
        .properties = properties.rows,
        .propertyCount = Properties,
        .methods = methods,
        .methodCount = Methods,
        .flags = flags,
    };
}

} // namespace qvr::frame
