/// \file
/// A program of the host's language, taken apart.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace script
{

/// Both count from 1; columns count bytes.
struct Place
{
    std::size_t line = 1;
    std::size_t column = 1;
};

/// A colour of the language, &h00RRGGBB.
struct Colour
{
    std::uint32_t rgb = 0;

    bool operator==(const Colour&) const = default;
};

enum class Operator
{
    Or,
    Xor,
    And,
    Equal,
    NotEqual,
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    Is,
    Plus,
    Minus,
    Times,
    Divide,
    DivideWhole,
    Mod,
    Power,
    Not
};

struct Expression;

using Arguments = std::vector<Expression>;

struct Literal
{
    std::variant<std::nullptr_t, bool, std::int32_t, double, Colour, std::string> value;
};

/// "@photo.png", which only calls on the command line have.
struct FileName
{
    std::string name;
    bool raw = false; ///< its bytes are wanted, whatever they are
};

/// A variable, or a call of a function, a global method or a method of the receiver that calls on the command
/// line have.
struct Name
{
    std::string name;
    std::optional<std::size_t> variable; ///< number of the variable that is meant
    Arguments arguments;
};

struct NewObject
{
    std::string className;
    Arguments arguments;
};

/// What stands behind a point.
struct Member
{
    Place place;
    std::string name;
    Arguments arguments;
};

struct Path
{
    std::unique_ptr<Expression> base;
    std::vector<Member> members; ///< one at least
};

struct Unary
{
    Operator operation = Operator::Not;
    std::unique_ptr<Expression> operand;
};

/// Operators of the same rank, from left to right.
struct Chain
{
    struct Link
    {
        Operator operation;
        Place place;
        std::unique_ptr<Expression> operand;
    };

    std::unique_ptr<Expression> first;
    std::vector<Link> links;
};

struct Expression
{
    Place place;
    std::variant<Literal, FileName, Name, NewObject, Path, Unary, Chain> node;
};

/// What a name or a path names in the end: "B" of "A.B".
inline const std::string& lastNameIn(const Expression& expression)
{
    const auto* path = std::get_if<Path>(&expression.node);
    return path == nullptr ? std::get<Name>(expression.node).name : path->members.back().name;
}

/// A type as it is written.
struct TypeName
{
    Place place;
    std::string name;
};

struct Statement;

using Block = std::vector<Statement>;

struct Dim
{
    std::vector<std::size_t> variables;
    TypeName type;
    bool makesNew = false; ///< As New
    Arguments arguments;   ///< of New
    std::optional<Expression> initial;
};

struct Assignment
{
    Expression target; ///< a `Name` or a `Path`
    Expression value;
};

/// A call whose result is not used.
struct Call
{
    Expression call;
};

struct Print
{
    Expression value;
};

struct If
{
    struct Branch
    {
        Expression condition;
        Block block;
    };

    std::vector<Branch> branches;
    Block otherwise;
};

struct For
{
    std::size_t variable = 0;
    std::optional<TypeName> type; ///< where the loop declares its variable
    Expression first;
    Expression last;
    std::optional<Expression> step;
    bool down = false;
    Block block;
};

/// While ... Wend, and Do ... Loop with its conditions turned round.
struct Loop
{
    bool isWhile = true;
    std::optional<Expression> before; ///< While
    std::optional<Expression> until;  ///< Do Until
    std::optional<Expression> after;  ///< Loop Until
    Block block;
};

enum class LoopKind
{
    Any,
    For,
    While,
    Do
};

/// Exit and Continue.
struct Leave
{
    bool repeats = false; ///< Continue
    LoopKind kind = LoopKind::Any;
};

struct Statement
{
    Place place;
    std::variant<Dim, Assignment, Call, Print, If, For, Loop, Leave> node;
};

/// A name in a program, with its place.
struct NamedPlace
{
    std::string name;
    Place place;
};

struct Program
{
    std::string file; ///< as messages call it
    std::string text; ///< of a call on the command line
    Block block;
    std::size_t variableCount = 0;
    std::vector<NamedPlace> freeNames;  ///< names of no variable
    std::vector<NamedPlace> classNames; ///< what is declared or made, built-in types included
    std::vector<NamedPlace> fileNames;  ///< behind "@"
};

} // namespace script
