#include "cli/call_text.h"

#include "host/calls/declaration.h"
#include "host/error.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>

namespace cli
{

namespace
{

bool isSpace(char character)
{
    return std::isspace(static_cast<unsigned char>(character)) != 0;
}

bool isWordCharacter(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

/// Reads a call from left to right.
class Parser
{
public:
    explicit Parser(std::string_view text) : whole(text), rest(text)
    {
    }

    CallText call()
    {
        CallText result;
        result.name = takeWhile(isWordCharacter);
        if (result.name.empty())
            fail("a method's name");
        if (take('(') && !take(')'))
        {
            do
                result.arguments.push_back(literal());
            while (take(','));
            if (!take(')'))
                fail("\",\" or \")\"");
        }
        if (take('='))
            result.assigned = literal();
        skipSpace();
        if (!rest.empty())
            fail("the end");
        return result;
    }

private:
    Literal literal()
    {
        skipSpace();
        const char first = rest.empty() ? '\0' : rest.front();
        if (first == '"')
            return quoted();
        if (take('@'))
            return file();
        if (take('&'))
            return hexadecimal();
        if (std::isdigit(static_cast<unsigned char>(first)) != 0 || first == '-' || first == '+' ||
            first == '.')
            return number();
        return word();
    }

    /// A quotation mark inside of a text is doubled.
    std::string quoted()
    {
        std::string result;
        rest.remove_prefix(1);
        while (true)
        {
            const std::size_t end = rest.find('"');
            if (end == std::string_view::npos)
                fail("a closing quotation mark");
            result += rest.substr(0, end);
            rest.remove_prefix(end + 1);
            if (!rest.starts_with('"'))
                return result;
            result += '"';
            rest.remove_prefix(1);
        }
    }

    FileName file()
    {
        FileName result{rest.starts_with('"') ? quoted() : takeWhile([](char c) {
            return c != ',' && c != '(' && c != ')' && !isSpace(c);
        })};
        if (result.name.empty())
            fail("a file name");
        return result;
    }

    std::uint32_t hexadecimal()
    {
        if (!take('h') && !take('H') && !take('c') && !take('C'))
            fail("\"&h\" or \"&c\"");
        constexpr int base = 16;
        return parsed<std::uint32_t>(takeWhile(isWordCharacter), "a hexadecimal number of 32 bits", base);
    }

    Literal number()
    {
        take('+');
        std::string digits = takeWhile([](char c) { return isWordCharacter(c) || c == '.' || c == '-'; });
        // The sign of an exponent: "1e+3".
        if (rest.starts_with('+') && (digits.ends_with('e') || digits.ends_with('E')))
        {
            rest.remove_prefix(1);
            digits += takeWhile(isWordCharacter);
        }
        if (digits.find_first_of(".eE") != std::string::npos)
            return parsed<double>(digits, "a number");
        const auto wide = parsed<std::int64_t>(digits, "a number");
        if (wide < std::numeric_limits<std::int32_t>::min() ||
            wide > std::numeric_limits<std::int32_t>::max())
            fail("an integer of 32 bits");
        return static_cast<std::int32_t>(wide);
    }

    Literal word()
    {
        const std::string text = takeWhile(isWordCharacter);
        if (text.empty())
            fail("a value");
        if (standin::sameName(text, "nil"))
            return nullptr;
        if (standin::sameName(text, "true"))
            return true;
        if (standin::sameName(text, "false"))
            return false;
        return VariableName{text};
    }

    template <class Number, class... Base>
    Number parsed(std::string_view digits, const char* wanted, Base... base)
    {
        Number value{};
        const char* end = digits.data() + digits.size();
        const auto [stopped, error] = std::from_chars(digits.data(), end, value, base...);
        if (error != std::errc() || stopped != end)
            fail(wanted);
        return value;
    }

    void skipSpace()
    {
        while (!rest.empty() && isSpace(rest.front()))
            rest.remove_prefix(1);
    }

    template <class Predicate>
    std::string takeWhile(Predicate belongs)
    {
        skipSpace();
        const auto end = std::find_if_not(rest.begin(), rest.end(), belongs);
        std::string result(rest.begin(), end);
        rest.remove_prefix(result.size());
        return result;
    }

    bool take(char character)
    {
        skipSpace();
        if (!rest.starts_with(character))
            return false;
        rest.remove_prefix(1);
        return true;
    }

    [[noreturn]] void fail(const std::string& wanted)
    {
        throw standin::Error("call \"" + std::string(whole) + "\": expected " + wanted + " at character " +
                             std::to_string(whole.size() - rest.size() + 1));
    }

    std::string_view whole;
    std::string_view rest;
};

} // namespace

CallText parseCall(std::string_view text)
{
    return Parser(text).call();
}

} // namespace cli
