// The grammar, and what makes a program's tree of what it finds. Nothing else sees the parser library, which
// takes the compiler longer than the rest of the language.
#include "script/parser.h"

#include "host/names.h"

#include <tao/pegtl.hpp>
#include <tao/pegtl/contrib/limit_depth.hpp>
#include <tao/pegtl/contrib/parse_tree.hpp>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>
#include <map>

namespace script
{

namespace
{

namespace grammar
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

} // namespace grammar

using Node = tao::pegtl::parse_tree::node;

std::string lower(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

template <class... Rules>
bool isOne(const Node& node)
{
    return (node.is_type<Rules>() || ...);
}

Operator operatorOf(const Node& node)
{
    static const std::map<std::string, Operator, std::less<>> operators{
        {"or", Operator::Or},          {"xor", Operator::Xor},     {"and", Operator::And},
        {"=", Operator::Equal},        {"<>", Operator::NotEqual}, {"<", Operator::Less},
        {"<=", Operator::LessOrEqual}, {">", Operator::Greater},   {">=", Operator::GreaterOrEqual},
        {"is", Operator::Is},          {"+", Operator::Plus},      {"-", Operator::Minus},
        {"*", Operator::Times},        {"/", Operator::Divide},    {"\\", Operator::DivideWhole},
        {"mod", Operator::Mod},        {"^", Operator::Power},     {"not", Operator::Not},
    };
    return operators.at(lower(node.string_view()));
}

/// Where a node's text begins, with what stands in front of it for sure.
Place placeOf(const Node& node)
{
    std::size_t before = 0;
    if (node.is_type<grammar::QuotedText>())
        before = 1;
    if (isOne<grammar::HexDigits, grammar::ColourDigits, grammar::BinaryDigits>(node))
        before = 2;
    return {node.m_begin.line, node.m_begin.column - before};
}

/// Makes a program of the nodes that the grammar selects. Variables get their numbers here: a name means the
/// innermost declaration above it.
class Builder
{
public:
    Builder(std::string file, bool takesFiles) : takesFileNames(takesFiles)
    {
        program.file = std::move(file);
    }

    Program programOf(const Node& root)
    {
        program.block = block(*root.children.at(0));
        return std::move(program);
    }

    /// The nodes of a path, and of the value that is assigned to it.
    Program callOf(const Node& root)
    {
        program.block.push_back(pathStatement(root));
        return std::move(program);
    }

private:
    using Children = std::vector<std::unique_ptr<Node>>;

    [[noreturn]] void fail(const Node& node, const std::string& text) const
    {
        throw Failure(program.file, placeOf(node), text);
    }

    // Variables

    std::optional<std::size_t> find(const std::string& name) const
    {
        for (auto scope = scopes.rbegin(); scope != scopes.rend(); ++scope)
            if (const auto found = scope->find(name); found != scope->end())
                return found->second;
        return std::nullopt;
    }

    std::size_t declare(const Node& node)
    {
        const std::size_t number = program.variableCount;
        if (!scopes.back().emplace(lower(node.string_view()), number).second)
            fail(node, "expected another name, there is a variable " + node.string() + " already");
        ++program.variableCount;
        return number;
    }

    std::size_t existing(const Node& node) const
    {
        const auto found = find(lower(node.string_view()));
        if (!found)
            fail(node, "expected a variable, \"" + node.string() + "\" is none");
        return *found;
    }

    TypeName typeName(const Node& node)
    {
        program.classNames.push_back({node.string(), placeOf(node)});
        return {placeOf(node), node.string()};
    }

    // Expressions

    template <class Number>
    Number number(const Node& node, std::string_view digits, int base, const std::string& wanted) const
    {
        Number value{};
        const char* end = digits.data() + digits.size();
        const auto [stopped, error] = std::from_chars(digits.data(), end, value, base);
        if (error != std::errc() || stopped != end)
            fail(node, "expected " + wanted);
        return value;
    }

    /// `negated` is what stands behind a minus, where one more fits.
    std::int32_t whole(const Node& node, bool negated) const
    {
        constexpr int decimal = 10;
        const std::string wanted = "an integer of 32 bits";
        const auto value = number<std::uint32_t>(node, node.string_view(), decimal, wanted);
        constexpr auto largest = static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
        if (value > largest + (negated ? 1 : 0))
            fail(node, "expected " + wanted);
        return static_cast<std::int32_t>(negated ? 0 - value : value);
    }

    double real(const Node& node) const
    {
        const std::string_view digits = node.string_view();
        double value = 0;
        const auto [stopped, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (error != std::errc())
            fail(node, "expected a number within the range of doubles");
        return value;
    }

    static std::string unquoted(const Node& node)
    {
        std::string text = node.string();
        for (std::size_t at = text.find("\"\""); at != std::string::npos; at = text.find("\"\"", at + 1))
            text.erase(at, 1);
        return text;
    }

    Literal literal(const Node& node) const
    {
        constexpr int binary = 2;
        constexpr int hexadecimal = 16;
        constexpr std::uint32_t largestColour = 0xFFFFFF;
        const std::string wanted = "a hexadecimal number of 32 bits";
        if (node.is_type<grammar::Whole>())
            return {whole(node, false)};
        if (node.is_type<grammar::Real>())
            return {real(node)};
        if (node.is_type<grammar::HexDigits>())
            return {static_cast<std::int32_t>(
                number<std::uint32_t>(node, node.string_view(), hexadecimal, wanted))};
        if (node.is_type<grammar::BinaryDigits>())
            return {static_cast<std::int32_t>(
                number<std::uint32_t>(node, node.string_view(), binary, "a binary number of 32 bits"))};
        if (node.is_type<grammar::ColourDigits>())
        {
            const auto rgb = number<std::uint32_t>(node, node.string_view(), hexadecimal, wanted);
            if (rgb > largestColour)
                fail(node, "expected a colour, a hexadecimal number of six digits");
            return {Colour{rgb}};
        }
        if (node.is_type<grammar::QuotedText>())
            return {unquoted(node)};
        if (node.is_type<grammar::Nil>())
            return {nullptr};
        return {node.is_type<grammar::True>()};
    }

    Arguments arguments(const Node& list)
    {
        Arguments result;
        for (const auto& child : list.children)
            result.push_back(expression(*child));
        return result;
    }

    /// The list that may stand behind the first child.
    Arguments argumentsBehind(const Children& children)
    {
        return children.size() > 1 ? arguments(*children[1]) : Arguments();
    }

    Name name(const Node& node)
    {
        const Node& text = *node.children.at(0);
        Name result{text.string(), find(lower(text.string_view())), argumentsBehind(node.children)};
        if (!result.variable)
            program.freeNames.push_back({result.name, placeOf(text)});
        return result;
    }

    NewObject newObject(const Node& node)
    {
        const TypeName type = typeName(*node.children.at(0));
        return {type.name, argumentsBehind(node.children)};
    }

    FileName fileName(const Node& node)
    {
        if (!takesFileNames)
            fail(node, "expected a value");
        const Node& text = *node.children.at(0);
        FileName file{text.is_type<grammar::QuotedText>() ? unquoted(text) : text.string()};
        program.fileNames.push_back({file.name, placeOf(node)});
        return file;
    }

    Path path(const Node& node)
    {
        Path result;
        for (const auto& child : node.children)
        {
            if (result.base == nullptr)
            {
                result.base = boxed(*child);
                continue;
            }
            const Node& text = *child->children.at(0);
            result.members.push_back({placeOf(text), text.string(), argumentsBehind(child->children)});
        }
        return result;
    }

    decltype(Expression::node) signedOperand(const Node& node)
    {
        const Operator operation = operatorOf(*node.children.at(0));
        const Node& operand = *node.children.at(1);
        if (operation == Operator::Minus && operand.is_type<grammar::Whole>())
            return Literal{whole(operand, true)};
        return Unary{operation, boxed(operand)};
    }

    Chain chain(const Node& node)
    {
        Chain result;
        result.first = boxed(*node.children.at(0));
        for (std::size_t index = 1; index + 1 < node.children.size(); index += 2)
        {
            const Node& operation = *node.children[index];
            result.links.push_back(
                {operatorOf(operation), placeOf(operation), boxed(*node.children[index + 1])});
        }
        return result;
    }

    decltype(Expression::node) expressionNode(const Node& node)
    {
        if (isOne<grammar::Power, grammar::Product, grammar::Sum, grammar::Comparison, grammar::Conjunction,
                  grammar::Disjunction>(node))
            return chain(node);
        if (isOne<grammar::Path, grammar::CallTarget, grammar::MethodOfCall, grammar::Reached>(node))
            return path(node);
        if (node.is_type<grammar::Signed>())
            return signedOperand(node);
        if (node.is_type<grammar::Named>())
            return name(node);
        if (node.is_type<grammar::New>())
            return newObject(node);
        if (node.is_type<grammar::AtFile>())
            return fileName(node);
        return literal(node);
    }

    Expression expression(const Node& node)
    {
        return {placeOf(node), expressionNode(node)};
    }

    std::unique_ptr<Expression> boxed(const Node& node)
    {
        return std::make_unique<Expression>(expression(node));
    }

    // Statements

    Block block(const Node& node)
    {
        scopes.emplace_back();
        Block result = statements(node);
        scopes.pop_back();
        return result;
    }

    Block statements(const Node& node)
    {
        Block result;
        for (const auto& child : node.children)
        {
            if (child->is_type<grammar::DimStatement>())
                for (const auto& group : child->children)
                    result.push_back({placeOf(*group), dim(*group)});
            else
                result.push_back(statement(*child));
        }
        return result;
    }

    Dim dim(const Node& node)
    {
        Dim result;
        // A variable's own declaration does not see it yet.
        std::vector<const Node*> names;
        for (const auto& child : node.children)
        {
            if (child->is_type<grammar::VariableText>())
                names.push_back(child.get());
            else if (child->is_type<grammar::AsNew>())
                result.makesNew = true;
            else if (child->is_type<grammar::ClassText>())
                result.type = typeName(*child);
            else if (child->is_type<grammar::List>())
                result.arguments = arguments(*child);
            else
                result.initial = expression(*child);
        }
        for (const Node* name : names)
            result.variables.push_back(declare(*name));
        return result;
    }

    If ifStatement(const Node& node)
    {
        If result;
        Expression condition = expression(*node.children.at(0));
        const Node& rest = *node.children.at(1);
        if (rest.is_type<grammar::ShortIf>())
        {
            result.branches.push_back({std::move(condition), single(*rest.children.at(0))});
            if (rest.children.size() > 1)
                result.otherwise = single(*rest.children[1]->children.at(0));
            return result;
        }
        result.branches.push_back({std::move(condition), block(*rest.children.at(0))});
        for (std::size_t index = 1; index < rest.children.size(); ++index)
        {
            const Node& part = *rest.children[index];
            if (part.is_type<grammar::ElsePart>())
                result.otherwise = block(*part.children.at(0));
            else
            {
                Expression next = expression(*part.children.at(0));
                result.branches.push_back({std::move(next), block(*part.children.at(1))});
            }
        }
        return result;
    }

    Block single(const Node& node)
    {
        Block result;
        result.push_back(statement(node));
        return result;
    }

    For forStatement(const Node& node)
    {
        For result;
        std::vector<Expression> bounds;
        const Node* type = nullptr;
        const Node* body = nullptr;
        const Node* next = nullptr;
        for (std::size_t index = 1; index < node.children.size(); ++index)
        {
            const Node& child = *node.children[index];
            if (child.is_type<grammar::ForType>())
                type = child.children.at(0).get();
            else if (child.is_type<grammar::Downwards>())
                result.down = true;
            else if (child.is_type<grammar::Step>())
                result.step = expression(*child.children.at(0));
            else if (child.is_type<grammar::Block>())
                body = &child;
            else if (child.is_type<grammar::VariableText>())
                next = &child;
            else if (!child.is_type<grammar::Upwards>())
                bounds.push_back(expression(child));
        }
        result.first = std::move(bounds.at(0));
        result.last = std::move(bounds.at(1));

        scopes.emplace_back();
        const Node& variable = *node.children[0];
        if (type != nullptr)
        {
            result.type = typeName(*type);
            result.variable = declare(variable);
        }
        else
            result.variable = existing(variable);
        if (next != nullptr && !standin::sameName(next->string_view(), variable.string_view()))
            fail(*next, "expected \"" + variable.string() + "\" or the end of the line");
        result.block = loopBlock(*body, LoopKind::For);
        scopes.pop_back();
        return result;
    }

    Block loopBlock(const Node& node, LoopKind kind)
    {
        loops.push_back(kind);
        Block result = block(node);
        loops.pop_back();
        return result;
    }

    Loop whileStatement(const Node& node)
    {
        Loop result;
        result.before = expression(*node.children.at(0));
        result.block = loopBlock(*node.children.at(1), LoopKind::While);
        return result;
    }

    Loop doStatement(const Node& node)
    {
        Loop result;
        result.isWhile = false;
        for (const auto& child : node.children)
        {
            if (child->is_type<grammar::DoUntil>())
                result.until = expression(*child->children.at(0));
            else if (child->is_type<grammar::LoopUntil>())
                result.after = expression(*child->children.at(0));
            else
                result.block = loopBlock(*child, LoopKind::Do);
        }
        return result;
    }

    Leave leave(const Node& node) const
    {
        Leave result{node.is_type<grammar::ContinueStatement>(), LoopKind::Any};
        if (!node.children.empty())
        {
            const Node& kind = *node.children[0];
            result.kind = kind.is_type<grammar::ForKind>()     ? LoopKind::For
                          : kind.is_type<grammar::WhileKind>() ? LoopKind::While
                                                               : LoopKind::Do;
        }
        const bool inside = result.kind == LoopKind::Any
                                ? !loops.empty()
                                : std::find(loops.begin(), loops.end(), result.kind) != loops.end();
        if (!inside)
            fail(node, "expected a loop around this");
        return result;
    }

    Statement pathStatement(const Node& node)
    {
        const Node& target = *node.children.at(0);
        Expression first = expression(target);
        if (node.children.size() == 1)
            return {placeOf(target), Call{std::move(first)}};
        return {placeOf(target), Assignment{std::move(first), expression(*node.children[1])}};
    }

    decltype(Statement::node) statementNode(const Node& node)
    {
        if (node.is_type<grammar::PrintStatement>())
            return Print{expression(*node.children.at(0))};
        if (node.is_type<grammar::IfStatement>())
            return ifStatement(node);
        if (node.is_type<grammar::ForStatement>())
            return forStatement(node);
        if (node.is_type<grammar::WhileStatement>())
            return whileStatement(node);
        if (node.is_type<grammar::DoStatement>())
            return doStatement(node);
        if (isOne<grammar::ExitStatement, grammar::ContinueStatement>(node))
            return leave(node);
        return pathStatement(node).node;
    }

    Statement statement(const Node& node)
    {
        return {placeOf(node), statementNode(node)};
    }

    Program program;
    bool takesFileNames;
    std::vector<std::map<std::string, std::size_t>> scopes;
    std::vector<LoopKind> loops;
};

template <class Grammar>
std::unique_ptr<Node> treeOf(std::string_view text, const std::string& file)
{
    namespace pegtl = tao::pegtl;
    pegtl::memory_input input(text.data(), text.size(), file);
    try
    {
        return pegtl::parse_tree::parse<Grammar, grammar::Selector, grammar::Limit, grammar::Control>(input);
    }
    catch (const pegtl::parse_error& error)
    {
        const pegtl::position& where = error.positions().front();
        const std::string message(error.message());
        const bool tooDeep = message.starts_with("maximum");
        throw Failure(file, {where.line, where.column},
                      tooDeep ? "expected at most " + std::to_string(deepestNesting) +
                                    " brackets, signs and blocks in each other"
                              : "expected " + message);
    }
}

} // namespace

Program parseProgram(std::string_view text, const std::string& file)
{
    return Builder(file, false).programOf(*treeOf<grammar::Program>(text, file));
}

Program parseCall(std::string_view text)
{
    const std::string file = "call";
    try
    {
        return Builder(file, true).callOf(*treeOf<grammar::OneCall>(text, file));
    }
    catch (const Failure& failure)
    {
        throw standin::Error("call \"" + std::string(text) + "\": " + failure.text() + " at character " +
                             std::to_string(failure.place().column));
    }
}

} // namespace script
