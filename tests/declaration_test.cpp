// What the plug-in's tables compare at compile time: a declaration's text with the function behind it.
#include "frame/table_rows.h"

#include <cstdint>

namespace
{

using qvr::frame::DeclarationOf;
using qvr::frame::Misfit;
using qvr::frame::TypeName;

using Block = REALmemoryBlockStruct*;
using Picture = REALpictureStruct*;
using String = REALstringStruct*;
using Integer = std::int32_t;
using Colour = std::uint32_t;
using Boolean = signed char;

template <class Signature>
constexpr Misfit misfit(const char* declaration)
{
    return DeclarationOf<Signature>::misfit(declaration);
}

template <class Signature>
constexpr bool fits(const char* declaration)
{
    return misfit<Signature>(declaration) == Misfit::None;
}

// Every type, as an argument and as a result.
static_assert(fits<Integer(Integer)>("F(a as integer) as integer"));
static_assert(fits<double(double)>("F(a as double) as double"));
static_assert(fits<Colour(Colour)>("F(a as color) as color"));
static_assert(fits<Colour(Colour)>("F(a as UInt32) as UInt32"));
static_assert(fits<Boolean(Boolean)>("F(a as boolean) as boolean"));
static_assert(fits<Picture(Picture)>("F(a as picture) as picture"));
static_assert(fits<Block(Block)>("F(a as memoryblock) as memoryblock"));
static_assert(fits<String(String)>("F(a as String) as string"));

// Case, blanks and defaults do not matter; the count does.
static_assert(fits<void()>("Close"));
static_assert(fits<Boolean()>("  Run  AS Boolean "));
static_assert(fits<Picture(Integer, Integer)>("F(left as integer,top As Integer) as Picture"));
static_assert(fits<Picture(Picture, Colour)>("F(dest as picture = nil, c as color=&c88B5C4) as picture"));
static_assert(fits<void(Integer)>("F(tolerance as integer = -1)"));
static_assert(misfit<void()>("F(a as integer)") == Misfit::Arguments);
static_assert(misfit<void(Integer)>("F") == Misfit::Arguments);
static_assert(misfit<void(Integer)>("F()") == Misfit::Arguments);
static_assert(misfit<void(Integer)>("F(a as integer, b as integer)") == Misfit::Arguments);
static_assert(misfit<void(Integer, Integer)>("F(a as integer)") == Misfit::Arguments);
static_assert(misfit<void(Integer, Integer)>("F(a as integer b as integer)") == Misfit::Arguments);

// Each type is its own.
static_assert(misfit<void(Colour)>("F(a as integer)") == Misfit::Arguments);
static_assert(misfit<void(Integer)>("F(a as color)") == Misfit::Arguments);
static_assert(misfit<void(double)>("F(a as integer)") == Misfit::Arguments);
static_assert(misfit<void(float)>("F(a as double)") == Misfit::Arguments);
static_assert(misfit<void(bool)>("F(a as boolean)") == Misfit::Arguments);
static_assert(misfit<void(Picture)>("F(a as memoryblock)") == Misfit::Arguments);
static_assert(misfit<void(Block)>("F(a as picture)") == Misfit::Arguments);
static_assert(misfit<void(const char*)>("F(a as string)") == Misfit::Arguments);
static_assert(misfit<void(double, Integer)>("F(a as integer, b as double)") == Misfit::Arguments);
static_assert(misfit<void(Integer)>("F(a as integ)") == Misfit::Arguments);
static_assert(misfit<void(Integer)>("F(a as integers)") == Misfit::Arguments);

// A variable of the caller's is a reference or a pointer, and nothing else is.
static_assert(fits<void(Integer&, Block&)>("F(byref a as integer, ByRef b as memoryblock)"));
static_assert(fits<void(Integer*, Block*)>("F(byref a as integer, byref b as memoryblock)"));
static_assert(misfit<void(Integer)>("F(byref a as integer)") == Misfit::Arguments);
static_assert(misfit<void(Picture)>("F(byref a as picture)") == Misfit::Arguments);
static_assert(misfit<void(Integer&)>("F(a as integer)") == Misfit::Arguments);
static_assert(misfit<void(Integer*)>("F(a as integer)") == Misfit::Arguments);
static_assert(misfit<void(double&)>("F(byref a as integer)") == Misfit::Arguments);
static_assert(misfit<void(const Integer&)>("F(byref a as integer)") == Misfit::Arguments);

static_assert(misfit<void()>("F as integer") == Misfit::Result);
static_assert(misfit<Integer()>("F") == Misfit::Result);
static_assert(misfit<Integer()>("F as double") == Misfit::Result);
static_assert(misfit<Picture(Integer)>("F(a as integer)") == Misfit::Result);
static_assert(misfit<Integer()>("F as integer as integer") == Misfit::Result);

static_assert(misfit<void()>("") == Misfit::Name);
static_assert(misfit<void(Integer)>("(a as integer)") == Misfit::Name);
static_assert(misfit<void(Integer)>("F(a integer)") == Misfit::Arguments);
static_assert(misfit<void(Integer)>("F(as integer)") == Misfit::Arguments);
static_assert(misfit<void(Integer)>("F(a as integer = )") == Misfit::Arguments);
static_assert(misfit<void(Integer)>("F(a as integer") == Misfit::Arguments);

static_assert(TypeName<Integer>::names("Integer") && TypeName<double>::names("Double"));
static_assert(TypeName<Picture>::names("Picture"));
static_assert(!TypeName<Integer>::names("Double") && !TypeName<double>::names("Integer"));
static_assert(!TypeName<Integer>::names("Integer(0)") && !TypeName<std::int16_t>::names("Integer"));

// The object comes first, and a setter takes the value last and returns nothing.
using Object = REALobjectStruct*;

template <class Self, class Handler, class Declared>
constexpr bool isMethod = requires(Handler* handler, qvr::frame::Declaration<Declared> declaration)
{
    qvr::frame::MethodsOf<Self>::method(0, handler, declaration);
};
static_assert(isMethod<REALpictureStruct, Picture(Picture, Boolean), Picture(Boolean)>);
static_assert(isMethod<REALobjectStruct, void(Object), void()>);
static_assert(!isMethod<REALpictureStruct, Picture(Boolean), Picture(Boolean)>);
static_assert(!isMethod<REALpictureStruct, void(Object), void()>);
static_assert(!isMethod<REALobjectStruct, void(Picture), void()>);

template <class Setter>
constexpr bool isSetter = requires(Picture (*getter)(Picture, Boolean), Setter* setter,
                                   qvr::frame::Declaration<Picture(Boolean)> declaration)
{
    qvr::frame::Picture::assignableMethod(0, getter, setter, declaration);
};
static_assert(isSetter<void(Picture, Boolean, Picture)>);
static_assert(!isSetter<void(Picture, Picture, Boolean)>);
static_assert(!isSetter<void(Picture, Picture)>);
static_assert(!isSetter<void(Picture, Boolean)>);
static_assert(!isSetter<void(Picture, Boolean, Block)>);
static_assert(!isSetter<Picture(Picture, Boolean, Picture)>);
static_assert(!isSetter<void(Object, Boolean, Picture)>);

template <class Getter, class Setter>
constexpr bool areAccessors = requires(Getter* getter, Setter* setter, TypeName<double> type)
{
    qvr::frame::accessorProperty(0, "Factor", type, getter, setter);
};
static_assert(areAccessors<double(Object, long), void(Object, long, double)>);
static_assert(!areAccessors<double(Object), void(Object, double)>);
static_assert(!areAccessors<double(Object, long), void(Object, double, long)>);
static_assert(!areAccessors<double(Object, long), void(Object, long, float)>);
static_assert(!areAccessors<Integer(Object, long), void(Object, long, Integer)>);

} // namespace
