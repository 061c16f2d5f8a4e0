/// \file
/// Declarations in the host's language, held against the C++ functions behind them while they are compiled.
///
/// The host passes arguments by what the declaration says and never sees the function's type: a function of
/// other arguments would read whatever lies on the stack.
#pragma once

#include "abi/host_abi.h"

namespace qvr::frame
{

/// What keeps a function from being what a declaration says.
enum class Misfit : uint8_t
{
    None,
    Name,      ///< the text does not begin with a name
    Arguments, ///< their number, order, types or `byref`
    Result,    ///< its type, or whether there is one; or more text behind it
};

/// Reads a declaration from left to right. What is asked for is taken if it comes next; case and blanks do
/// not matter.
class DeclarationReader
{
public:
    constexpr explicit DeclarationReader(const char* declaration) : rest(declaration)
    {
    }

    constexpr bool takeName()
    {
        const int32_t length = wordLength();
        rest += length;
        return length > 0;
    }
    constexpr bool takeWord(const char* wanted)
    {
        const int32_t length = wordLength();
        for (int32_t i = 0; i < length; ++i)
            if (lowerCase(rest[i]) != lowerCase(wanted[i]))
                return false;
        if (length == 0 || wanted[length] != '\0')
            return false;
        rest += length;
        return true;
    }
    constexpr bool takeSymbol(char wanted)
    {
        skipBlanks();
        if (*rest != wanted)
            return false;
        ++rest;
        return true;
    }
    /// Everything before the next argument.
    constexpr bool takeDefault()
    {
        skipBlanks();
        const char* const start = rest;
        while (*rest != ',' && *rest != ')' && *rest != '\0')
            ++rest;
        return rest != start;
    }
    constexpr bool ended()
    {
        skipBlanks();
        return *rest == '\0';
    }

    /// The word for a type; false for one that the host's language has no word for.
    template <class Type>
    constexpr bool takeType()
    {
        if constexpr (__is_same(Type, int32_t))
            return takeWord("integer");
        else if constexpr (__is_same(Type, uint32_t))
            return takeWord("color") || takeWord("UInt32");
        else if constexpr (__is_same(Type, double))
            return takeWord("double");
        else if constexpr (__is_same(Type, signed char))
            return takeWord("boolean");
        else if constexpr (__is_same(Type, REALpictureStruct*))
            return takeWord("picture");
        else if constexpr (__is_same(Type, REALmemoryBlockStruct*))
            return takeWord("memoryblock");
        else if constexpr (__is_same(Type, REALstringStruct*))
            return takeWord("string");
        else
            return false;
    }

    /// An argument; only the text has defaults.
    template <class Type>
    constexpr bool takeArgument()
    {
        const bool fits = takeWord("byref") ? takeName() && takeWord("as") && takeType<Referred<Type>>()
                                            : takeName() && takeWord("as") && takeType<Type>();
        return fits && (!takeSymbol('=') || takeDefault());
    }

private:
    template <class Type>
    struct Referent
    {
        using Of = void;
    };
    template <class Type>
    struct Referent<Type&>
    {
        using Of = Type;
    };
    template <class Type>
    struct Referent<Type*>
    {
        using Of = Type;
    };
    /// What an argument that is passed by reference is a variable of.
    template <class Type>
    using Referred = typename Referent<Type>::Of;

    static constexpr char lowerCase(char character)
    {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
    }
    static constexpr bool isPartOfAWord(char character)
    {
        const char letter = lowerCase(character);
        return (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9') || letter == '_';
    }
    constexpr void skipBlanks()
    {
        while (*rest == ' ')
            ++rest;
    }
    constexpr int32_t wordLength()
    {
        skipBlanks();
        int32_t length = 0;
        while (isPartOfAWord(rest[length]))
            ++length;
        return length;
    }

    const char* rest;
};

/// Holds a signature, without the object that a method belongs to, against a declaration.
template <class Signature>
struct DeclarationOf;

template <class Result, class... Arguments>
struct DeclarationOf<Result(Arguments...)>
{
    static constexpr Misfit misfit(const char* declaration)
    {
        DeclarationReader reader{declaration};
        if (!reader.takeName())
            return Misfit::Name;
        if (!takeArguments(reader))
            return Misfit::Arguments;
        return takeResult(reader) && reader.ended() ? Misfit::None : Misfit::Result;
    }

private:
    static constexpr bool takeArguments(DeclarationReader& reader)
    {
        if (sizeof...(Arguments) == 0)
            return !reader.takeSymbol('(');
        char before = '(';
        const auto takeNext = [&](bool (DeclarationReader::*takeArgument)()) {
            const char symbol = before;
            before = ',';
            return reader.takeSymbol(symbol) && (reader.*takeArgument)();
        };
        return (takeNext(&DeclarationReader::takeArgument<Arguments>) && ...) && reader.takeSymbol(')');
    }
    static constexpr bool takeResult(DeclarationReader& reader)
    {
        if constexpr (__is_same(Result, void))
            return true;
        else
            return reader.takeWord("as") && reader.takeType<Result>();
    }
};

// Not constexpr, and defined nowhere: the compiler names them where a row of the tables does not fit.
void theTextDoesNotBeginWithAName();
void theFunctionTakesOtherArgumentsThanDeclared();
void theFunctionHasAnotherResultThanDeclared();
void theValueHasAnotherTypeThanDeclared();

/// The declaration of a function of that signature; of any other it does not compile.
template <class Signature>
struct Declaration
{
    const char* text;

    consteval Declaration(const char* declaration) : text(declaration)
    {
        switch (DeclarationOf<Signature>::misfit(declaration))
        {
        case Misfit::None:
            break;
        case Misfit::Name:
            theTextDoesNotBeginWithAName();
            break;
        case Misfit::Arguments:
            theFunctionTakesOtherArgumentsThanDeclared();
            break;
        case Misfit::Result:
            theFunctionHasAnotherResultThanDeclared();
            break;
        }
    }
};

/// The host's word for a type; any other does not compile.
template <class Type>
struct TypeName
{
    const char* text;

    consteval TypeName(const char* name) : text(name)
    {
        if (!names(name))
            theValueHasAnotherTypeThanDeclared();
    }

    static constexpr bool names(const char* name)
    {
        DeclarationReader reader{name};
        return reader.takeType<Type>() && reader.ended();
    }
};

} // namespace qvr::frame
