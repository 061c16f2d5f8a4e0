#include "host/calls/declaration.h"

#include "host/error.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <utility>

namespace standin
{

namespace
{

char lower(char character)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
}

/// Reads a declaration from left to right.
class Parser
{
public:
    explicit Parser(std::string_view text) : whole(text), rest(text)
    {
    }

    Declaration declaration()
    {
        Declaration result;
        result.name = word("a name");
        if (take('('))
            result.parameters = parameters();
        if (takeKeyword("as"))
            result.result = type();
        skipSpace();
        if (!rest.empty())
            fail("end of the text");
        return result;
    }

private:
    std::vector<Parameter> parameters()
    {
        std::vector<Parameter> result;
        if (take(')'))
            return result;
        do
            result.push_back(parameter());
        while (take(','));
        if (!take(')'))
            fail("\",\" or \")\"");
        return result;
    }

    Parameter parameter()
    {
        Parameter result;
        result.name = word("a parameter's name");
        if (sameName(result.name, "byref"))
        {
            result.byref = true;
            result.name = word("a parameter's name");
        }
        if (!takeKeyword("as"))
            fail("\"as\"");
        result.type = type();
        if (take('='))
            result.defaultValue = defaultValue(result.type);
        return result;
    }

    Type type()
    {
        const std::string_view before = rest;
        const std::string name = word("a type");
        for (const Type type : all<Type>)
            if (type != Type::Nothing && sameName(name, nameOf(type)))
                return type;
        rest = before;
        fail("a known type");
    }

    Default defaultValue(Type type)
    {
        if (takeKeyword("nil"))
            return nullptr;
        if (takeKeyword("true"))
            return true;
        if (takeKeyword("false"))
            return false;
        skipSpace();
        if (rest.size() > 2 && rest[0] == '&' && (lower(rest[1]) == 'c' || lower(rest[1]) == 'h'))
        {
            rest.remove_prefix(2);
            std::uint32_t value = 0;
            number(value, 16);
            return type == Type::Integer ? Default(static_cast<std::int32_t>(value)) : Default(value);
        }
        double value = 0;
        number(value);
        switch (type)
        {
        case Type::Integer:
            return static_cast<std::int32_t>(value);
        case Type::Colour:
        case Type::UInt32:
            return static_cast<std::uint32_t>(value);
        default:
            return value;
        }
    }

    template <class Number, class... Base>
    void number(Number& value, Base... base)
    {
        const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value, base...);
        if (error != std::errc())
            fail("a value");
        rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    }

    void skipSpace()
    {
        while (!rest.empty() && std::isspace(static_cast<unsigned char>(rest.front())))
            rest.remove_prefix(1);
    }

    std::string_view peekWord()
    {
        skipSpace();
        const auto end = std::find_if_not(rest.begin(), rest.end(), [](char c) {
            return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
        });
        return rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
    }

    std::string word(const char* wanted)
    {
        const std::string_view found = peekWord();
        if (found.empty() || std::isdigit(static_cast<unsigned char>(found.front())))
            fail(wanted);
        rest.remove_prefix(found.size());
        return std::string(found);
    }

    bool takeKeyword(std::string_view keyword)
    {
        if (!sameName(peekWord(), keyword))
            return false;
        rest.remove_prefix(keyword.size());
        return true;
    }

    bool take(char character)
    {
        skipSpace();
        if (rest.empty() || rest.front() != character)
            return false;
        rest.remove_prefix(1);
        return true;
    }

    [[noreturn]] void fail(const std::string& wanted)
    {
        skipSpace();
        throw Error("declaration \"" + std::string(whole) + "\": expected " + wanted + " at character " +
                    std::to_string(whole.size() - rest.size() + 1));
    }

    std::string_view whole;
    std::string_view rest;
};

struct DefaultText
{
    std::string operator()(std::nullptr_t) const
    {
        return "nil";
    }
    std::string operator()(bool value) const
    {
        return value ? "true" : "false";
    }
    std::string operator()(std::int32_t value) const
    {
        return std::to_string(value);
    }

    std::string operator()(std::uint32_t value) const
    {
        constexpr int colourDigits = 6;
        constexpr int bitsPerDigit = 4;
        std::string digits = "&c";
        for (int digit = colourDigits - 1; digit >= 0; --digit)
            digits += "0123456789ABCDEF"[(value >> (digit * bitsPerDigit)) & 0xF];
        return digits;
    }

    std::string operator()(double value) const
    {
        std::array<char, 32> buffer{};
        const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
        return {buffer.data(), result.ptr};
    }
};

} // namespace

std::size_t Declaration::requiredCount() const
{
    return static_cast<std::size_t>(
        std::count_if(parameters.begin(), parameters.end(),
                      [](const Parameter& parameter) { return !parameter.defaultValue.has_value(); }));
}

std::string Declaration::parameterText() const
{
    std::string text = "(";
    for (const Parameter& parameter : parameters)
    {
        if (text.size() > 1)
            text += ", ";
        text +=
            (parameter.byref ? "byref " : "") + parameter.name + " as " + std::string(nameOf(parameter.type));
        if (parameter.defaultValue)
            text += " = " + std::visit(DefaultText(), *parameter.defaultValue);
    }
    return text + ")";
}

Declaration parseDeclaration(std::string_view text)
{
    return Parser(text).declaration();
}

} // namespace standin
