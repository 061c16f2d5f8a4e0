#include "script/parser.h"

#include "host/names.h"
#include "script/grammar.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <map>

namespace script
{

namespace
{

using Node = tao::pegtl::parse_tree::node;

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
    return operators.at(standin::lowerCase(node.string_view()));
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
        if (!scopes.back().emplace(standin::lowerCase(node.string_view()), number).second)
            fail(node, "expected another name, there is a variable " + node.string() + " already");
        ++program.variableCount;
        return number;
    }

    std::size_t existing(const Node& node) const
    {
        const auto found = find(standin::lowerCase(node.string_view()));
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
            // Three digits mean another colour elsewhere.
            constexpr std::size_t digits = 6;
            if (node.string_view().size() != digits)
                fail(node, "expected a colour, a hexadecimal number of six digits");
            const auto rgb = number<std::uint32_t>(node, node.string_view(), hexadecimal, wanted);
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
        Name result{text.string(), find(standin::lowerCase(text.string_view())),
                    argumentsBehind(node.children)};
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
        constexpr std::string_view raw = "raw:";
        file.raw = file.name.starts_with(raw);
        if (file.raw)
            file.name.erase(0, raw.size());
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
        Program program = Builder(file, true).callOf(*treeOf<grammar::OneCall>(text, file));
        program.text = text;
        return program;
    }
    catch (const Failure& failure)
    {
        const std::size_t column = failure.place().column;
        throw CallFailure(failure.text() + " at character " + std::to_string(column), std::string(text),
                          column);
    }
}

} // namespace script
