/// \file
/// The language's grammar, for the parser alone: the library that it is written with takes the compiler
/// longer than the rest of the language.
#pragma once

#include "script/parser.h"

#include <tao/pegtl.hpp>
#include <tao/pegtl/contrib/limit_depth.hpp>
#include <tao/pegtl/contrib/parse_tree.hpp>

namespace script::grammar
{

using namespace tao::pegtl;

// Behind every token stand blanks, so that messages name the place of what follows.

struct Comment : seq<sor<one<'\''>, two<'/'>>, star<not_at<eolf>, any>>
{
};
struct Continuation : seq<one<'_'>, star<blank>, opt<Comment>, eol>
{
};
struct Blanks : star<sor<blank, Continuation>>
{
};
template <class... Rules>
struct Token : seq<Rules..., Blanks>
{
};
struct EndOfWord : not_at<identifier_other>
{
};
template <class Text>
struct Word : Token<Text, EndOfWord>
{
};

// clang-format off
struct AndText : TAO_PEGTL_ISTRING("and") {};
struct AsText : TAO_PEGTL_ISTRING("as") {};
struct CallText : TAO_PEGTL_ISTRING("call") {};
struct ContinueText : TAO_PEGTL_ISTRING("continue") {};
struct DimText : TAO_PEGTL_ISTRING("dim") {};
struct DoText : TAO_PEGTL_ISTRING("do") {};
struct DownToText : TAO_PEGTL_ISTRING("downto") {};
struct ElseText : TAO_PEGTL_ISTRING("else") {};
struct ElseIfText : TAO_PEGTL_ISTRING("elseif") {};
struct EndText : TAO_PEGTL_ISTRING("end") {};
struct ExitText : TAO_PEGTL_ISTRING("exit") {};
struct FalseText : TAO_PEGTL_ISTRING("false") {};
struct ForText : TAO_PEGTL_ISTRING("for") {};
struct IfText : TAO_PEGTL_ISTRING("if") {};
struct IsText : TAO_PEGTL_ISTRING("is") {};
struct LoopText : TAO_PEGTL_ISTRING("loop") {};
struct ModText : TAO_PEGTL_ISTRING("mod") {};
struct NewText : TAO_PEGTL_ISTRING("new") {};
struct NextText : TAO_PEGTL_ISTRING("next") {};
struct NilText : TAO_PEGTL_ISTRING("nil") {};
struct NotText : TAO_PEGTL_ISTRING("not") {};
struct OrText : TAO_PEGTL_ISTRING("or") {};
struct PrintText : TAO_PEGTL_ISTRING("print") {};
struct StepText : TAO_PEGTL_ISTRING("step") {};
struct ThenText : TAO_PEGTL_ISTRING("then") {};
struct ToText : TAO_PEGTL_ISTRING("to") {};
struct TrueText : TAO_PEGTL_ISTRING("true") {};
struct UntilText : TAO_PEGTL_ISTRING("until") {};
struct WendText : TAO_PEGTL_ISTRING("wend") {};
struct WhileText : TAO_PEGTL_ISTRING("while") {};
struct XorText : TAO_PEGTL_ISTRING("xor") {};
// clang-format on

struct Reserved : seq<sor<AndText, AsText, CallText, ContinueText, DimText, DownToText, DoText, ElseIfText,
                          ElseText, EndText, ExitText, FalseText, ForText, IfText, IsText, LoopText, ModText,
                          NewText, NextText, NilText, NotText, OrText, PrintText, StepText, ThenText, ToText,
                          TrueText, UntilText, WendText, WhileText, XorText>,
                      EndOfWord>
{
};

// Literals

struct HexDigits : seq<plus<xdigit>, EndOfWord>
{
};
struct ColourDigits : seq<plus<xdigit>, EndOfWord>
{
};
struct BinaryDigits : seq<plus<one<'0', '1'>>, EndOfWord>
{
};
struct BasedNumber : sor<seq<one<'h', 'H'>, must<HexDigits>>, seq<one<'c', 'C'>, must<ColourDigits>>,
                         seq<one<'b', 'B'>, must<BinaryDigits>>>
{
};
struct Based : Token<one<'&'>, must<BasedNumber>>
{
};
struct Exponent : seq<one<'e', 'E'>, opt<one<'+', '-'>>, plus<digit>>
{
};
struct Real : sor<seq<star<digit>, one<'.'>, plus<digit>, opt<Exponent>>,
                  seq<plus<digit>, one<'.'>, opt<Exponent>>, seq<plus<digit>, Exponent>>
{
};
struct Whole : plus<digit>
{
};
struct EndOfNumber : EndOfWord
{
};
struct Number : Token<sor<Real, Whole>, must<EndOfNumber>>
{
};
struct QuotedText : star<sor<two<'"'>, not_one<'"', '\r', '\n'>>>
{
};
struct ClosingQuote : one<'"'>
{
};
struct Quoted : Token<one<'"'>, QuotedText, must<ClosingQuote>>
{
};
struct True : Word<TrueText>
{
};
struct False : Word<FalseText>
{
};
struct Nil : Word<NilText>
{
};
struct BareFile : plus<not_one<' ', '\t', ',', '(', ')', '\r', '\n'>>
{
};
struct FileOfCall : sor<Quoted, Token<BareFile>>
{
};
struct AtFile : seq<one<'@'>, must<FileOfCall>>
{
};

// Expressions

struct Expression;
struct Signed;

struct Comma : Token<one<','>>
{
};
struct Opening : Token<one<'('>>
{
};
struct Closing : Token<one<')'>>
{
};
struct ListEnd : Closing
{
};
struct List : seq<Opening, sor<Closing, seq<must<Expression>, star<Comma, must<Expression>>, must<ListEnd>>>>
{
};
struct NameText : seq<not_at<Reserved>, identifier>
{
};
struct MemberText : identifier
{
};
struct ClassText : identifier
{
};
struct Named : seq<Token<NameText>, opt<List>>
{
};
struct Member : seq<Token<one<'.'>>, must<MemberText>, Blanks, opt<List>>
{
};
struct Path : seq<Named, star<Member>>
{
};
struct New : seq<Word<NewText>, must<ClassText>, Blanks, opt<List>>
{
};
struct BracketEnd : Closing
{
};
struct Bracketed : seq<Opening, must<Expression>, must<BracketEnd>>
{
};
struct Primary : sor<Based, Number, Quoted, True, False, Nil, AtFile, New, Named, Bracketed>
{
};
struct Reached : seq<Primary, star<Member>>
{
};

struct PowerOperator : one<'^'>
{
};
struct SignOperator : sor<one<'-', '+'>, seq<NotText, EndOfWord>>
{
};
struct ProductOperator : sor<one<'*', '\\'>, seq<one<'/'>, not_at<one<'/'>>>, seq<ModText, EndOfWord>>
{
};
struct SumOperator : one<'+', '-'>
{
};
struct ComparisonOperator
    : sor<string<'<', '='>, string<'<', '>'>, string<'>', '='>, one<'=', '<', '>'>, seq<IsText, EndOfWord>>
{
};
struct AndOperator : seq<AndText, EndOfWord>
{
};
struct OrOperator : seq<sor<OrText, XorText>, EndOfWord>
{
};

template <class Operand, class Operator, class Following = Operand>
struct ChainOf : seq<Operand, star<Token<Operator>, must<Following>>>
{
};
struct PowerOperand : sor<Signed, Reached>
{
};
struct Power : ChainOf<Reached, PowerOperator, PowerOperand>
{
};
struct Operand : sor<Signed, Power>
{
};
struct Signed : seq<Token<SignOperator>, must<Operand>>
{
};
struct Product : ChainOf<Operand, ProductOperator>
{
};
struct Sum : ChainOf<Product, SumOperator>
{
};
struct Comparison : ChainOf<Sum, ComparisonOperator>
{
};
struct Conjunction : ChainOf<Comparison, AndOperator>
{
};
struct Disjunction : ChainOf<Conjunction, OrOperator>
{
};
struct Expression : seq<Disjunction>
{
};

// Statements

struct Block;

struct EmptyLine : seq<Blanks, opt<Comment>, eol>
{
};
struct EndOfLine : seq<opt<Comment>, eolf>
{
};
struct EndOfStatement : EndOfLine
{
};
struct Equals : Token<one<'='>>
{
};
struct AsWord : Word<AsText>
{
};
struct VariableText : NameText
{
};
struct AsNew : Word<NewText>
{
};
struct DimGroup : seq<must<VariableText>, Blanks, star<Comma, must<VariableText>, Blanks>, must<AsWord>,
                      sor<seq<AsNew, must<ClassText>, Blanks, opt<List>>,
                          seq<must<ClassText>, Blanks, opt<Equals, must<Expression>>>>>
{
};
struct DimStatement : seq<Word<DimText>, DimGroup, star<Comma, DimGroup>>
{
};
struct PrintStatement : seq<Word<PrintText>, must<Expression>>
{
};
struct CallTarget : Path
{
};
struct CallStatement : seq<Word<CallText>, must<CallTarget>>
{
};
struct PathStatement : seq<Path, opt<Equals, must<Expression>>>
{
};
struct ForKind : Word<ForText>
{
};
struct WhileKind : Word<WhileText>
{
};
struct DoKind : Word<DoText>
{
};
struct LoopKindWord : sor<ForKind, WhileKind, DoKind>
{
};
struct ExitStatement : seq<Word<ExitText>, opt<LoopKindWord>>
{
};
struct ContinueStatement : seq<Word<ContinueText>, opt<LoopKindWord>>
{
};
struct SimpleStatement : sor<PrintStatement, CallStatement, ExitStatement, ContinueStatement, PathStatement>
{
};
struct ThenWord : Word<ThenText>
{
};
struct EndIf : seq<Word<EndText>, Word<IfText>>
{
};
struct ElseIfPart : seq<Word<ElseIfText>, must<Expression>, must<ThenWord>, must<EndOfLine>, Block>
{
};
struct ElsePart : seq<Word<ElseText>, must<EndOfLine>, Block>
{
};
struct ShortElse : seq<Word<ElseText>, must<SimpleStatement>>
{
};
struct ShortIf : seq<must<SimpleStatement>, opt<ShortElse>>
{
};
struct LongIf : seq<EndOfLine, Block, star<Blanks, ElseIfPart>, opt<Blanks, ElsePart>, Blanks, must<EndIf>>
{
};
struct IfStatement : seq<Word<IfText>, must<Expression>, must<ThenWord>, sor<LongIf, ShortIf>>
{
};
struct ForType : seq<AsWord, must<ClassText>, Blanks>
{
};
struct Upwards : Word<ToText>
{
};
struct Downwards : Word<DownToText>
{
};
struct Direction : sor<Upwards, Downwards>
{
};
struct Step : seq<Word<StepText>, must<Expression>>
{
};
struct ForEquals : Equals
{
};
struct NextWord : Word<NextText>
{
};
struct NextName : Token<VariableText>
{
};
struct ForStatement : seq<Word<ForText>, must<VariableText>, Blanks, opt<ForType>, must<ForEquals>,
                          must<Expression>, must<Direction>, must<Expression>, opt<Step>, must<EndOfLine>,
                          Block, Blanks, must<NextWord>, opt<NextName>>
{
};
struct WendWord : Word<WendText>
{
};
struct WhileStatement : seq<Word<WhileText>, must<Expression>, must<EndOfLine>, Block, Blanks, must<WendWord>>
{
};
struct LoopWord : Word<LoopText>
{
};
struct DoUntil : seq<Word<UntilText>, must<Expression>>
{
};
struct LoopUntil : seq<Word<UntilText>, must<Expression>>
{
};
struct DoStatement
    : seq<Word<DoText>, opt<DoUntil>, must<EndOfLine>, Block, Blanks, must<LoopWord>, opt<LoopUntil>>
{
};
struct Statement : sor<DimStatement, IfStatement, ForStatement, WhileStatement, DoStatement, SimpleStatement>
{
};
struct Line : sor<EmptyLine, seq<Blanks, Statement, must<EndOfStatement>>>
{
};
struct Block : star<Line>
{
};
struct EndOfProgram : eof
{
};
struct Program : seq<opt<utf8::bom>, Block, Blanks, opt<Comment>, must<EndOfProgram>>
{
};

struct MethodOfCall : Path
{
};
struct EndOfCall : eof
{
};
struct OneCall : seq<Blanks, must<MethodOfCall>, opt<Equals, must<Expression>>, must<EndOfCall>>
{
};

// Messages

struct Messages
{
    template <class Rule>
    static constexpr const char* message = nullptr;
    /// What has a message is optional in some places.
    template <class>
    static constexpr bool raise_on_failure = false;
};
// clang-format off
template <> constexpr const char* Messages::message<AsWord> = "\"As\"";
template <> constexpr const char* Messages::message<BasedNumber> = "\"&h\", \"&c\" or \"&b\"";
template <> constexpr const char* Messages::message<BinaryDigits> = "a binary number";
template <> constexpr const char* Messages::message<BracketEnd> = "\")\"";
template <> constexpr const char* Messages::message<CallTarget> = "a method's name";
template <> constexpr const char* Messages::message<ClassText> = "a type's name";
template <> constexpr const char* Messages::message<ClosingQuote> = "a closing quotation mark";
template <> constexpr const char* Messages::message<ColourDigits> = "a hexadecimal number";
template <> constexpr const char* Messages::message<Direction> = "\"To\" or \"DownTo\"";
template <> constexpr const char* Messages::message<EndIf> = "\"End If\"";
template <> constexpr const char* Messages::message<EndOfCall> = "the end";
template <> constexpr const char* Messages::message<EndOfLine> = "the end of the line";
template <> constexpr const char* Messages::message<EndOfNumber> = "a number";
template <> constexpr const char* Messages::message<EndOfProgram> = "a statement";
template <> constexpr const char* Messages::message<EndOfStatement> = "the end of the line";
template <> constexpr const char* Messages::message<Expression> = "a value";
template <> constexpr const char* Messages::message<FileOfCall> = "a file name";
template <> constexpr const char* Messages::message<ForEquals> = "\"=\"";
template <> constexpr const char* Messages::message<HexDigits> = "a hexadecimal number";
template <> constexpr const char* Messages::message<ListEnd> = "\",\" or \")\"";
template <> constexpr const char* Messages::message<LoopWord> = "\"Loop\"";
template <> constexpr const char* Messages::message<MemberText> = "a name";
template <> constexpr const char* Messages::message<MethodOfCall> = "a method's name";
template <> constexpr const char* Messages::message<NextWord> = "\"Next\"";
template <> constexpr const char* Messages::message<Operand> = "a value";
template <> constexpr const char* Messages::message<PowerOperand> = "a value";
template <> constexpr const char* Messages::message<Product> = "a value";
template <> constexpr const char* Messages::message<Sum> = "a value";
template <> constexpr const char* Messages::message<Comparison> = "a value";
template <> constexpr const char* Messages::message<Conjunction> = "a value";
template <> constexpr const char* Messages::message<SimpleStatement> = "a statement";
template <> constexpr const char* Messages::message<ThenWord> = "\"Then\"";
template <> constexpr const char* Messages::message<VariableText> = "a variable's name";
template <> constexpr const char* Messages::message<WendWord> = "\"Wend\"";
// clang-format on

template <class Rule>
using Control = must_if<Messages>::control<Rule>;

// What makes texts lie in each other.
template <class Rule>
struct Limit : nothing<Rule>
{
};
template <>
struct Limit<Expression> : limit_depth<deepestNesting>
{
};
template <>
struct Limit<Signed> : limit_depth<deepestNesting>
{
};
template <>
struct Limit<Block> : limit_depth<deepestNesting>
{
};

template <class Rule>
using Selector = parse_tree::selector<
    Rule,
    parse_tree::store_content::on<HexDigits, ColourDigits, BinaryDigits, Real, Whole, QuotedText, BareFile,
                                  True, False, Nil, NameText, MemberText, ClassText, VariableText,
                                  PowerOperator, SignOperator, ProductOperator, SumOperator,
                                  ComparisonOperator, AndOperator, OrOperator>,
    parse_tree::remove_content::on<AtFile, List, Named, Member, New, Signed, AsNew, DimGroup, DimStatement,
                                   PrintStatement, CallStatement, PathStatement, ForKind, WhileKind, DoKind,
                                   ExitStatement, ContinueStatement, ElseIfPart, ElsePart, ShortElse, ShortIf,
                                   LongIf, IfStatement, ForType, Upwards, Downwards, Step, ForStatement,
                                   WhileStatement, DoUntil, LoopUntil, DoStatement, Block>,
    parse_tree::fold_one::on<Path, CallTarget, MethodOfCall, Reached, Power, Product, Sum, Comparison,
                             Conjunction, Disjunction>>;

} // namespace script::grammar
