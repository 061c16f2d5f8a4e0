#include "host/calls/scanner.h"

#include "host/error.h"
#include "host/names.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>

namespace standin
{

namespace
{

bool isSpace(char character)
{
    return std::isspace(static_cast<unsigned char>(character)) != 0;
}

bool isDigit(char character)
{
    return std::isdigit(static_cast<unsigned char>(character)) != 0;
}

bool isWordCharacter(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

} // namespace

Scanner::Scanner(std::string_view text) : whole(text), rest(text)
{
}

void Scanner::expectEnd()
{
    if (peek() != '\0')
        fail("the end");
}

void Scanner::fail(const std::string& wanted)
{
    peek();
    throw Error("declaration \"" + std::string(whole) + "\": expected " + wanted + " at character " +
                std::to_string(whole.size() - rest.size() + 1));
}

char Scanner::peek()
{
    while (!rest.empty() && isSpace(rest.front()))
        rest.remove_prefix(1);
    return rest.empty() ? '\0' : rest.front();
}

bool Scanner::take(char character)
{
    if (peek() != character)
        return false;
    rest.remove_prefix(1);
    return true;
}

template <class Predicate>
std::string_view Scanner::peekWhile(Predicate belongs)
{
    peek();
    const auto end = std::find_if_not(rest.begin(), rest.end(), belongs);
    return rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
}

bool Scanner::takeKeyword(std::string_view keyword)
{
    if (!sameName(peekWhile(isWordCharacter), keyword))
        return false;
    rest.remove_prefix(keyword.size());
    return true;
}

std::string Scanner::name(const std::string& wanted)
{
    const std::string_view found = peekWhile(isWordCharacter);
    if (found.empty() || isDigit(found.front()))
        fail(wanted);
    rest.remove_prefix(found.size());
    return std::string(found);
}

std::optional<Literal> Scanner::literal()
{
    if (takeKeyword("nil"))
        return nullptr;
    if (takeKeyword("true"))
        return true;
    if (takeKeyword("false"))
        return false;
    const char first = peek();
    if (first == '&')
        return hexadecimal();
    if (isDigit(first) || first == '-' || first == '+' || first == '.')
        return number();
    return std::nullopt;
}

std::uint32_t Scanner::hexadecimal()
{
    constexpr int base = 16;
    if (rest.size() < 2 || std::string_view("hHcC").find(rest[1]) == std::string_view::npos)
        fail("\"&h\" or \"&c\"");
    const std::string_view found = peekWhile([](char c) { return c == '&' || isWordCharacter(c); });
    const std::string_view digits = found.substr(2);
    const auto value = parsed<std::uint32_t>(digits, "a hexadecimal number of 32 bits", base);
    rest.remove_prefix(found.size());
    return value;
}

Literal Scanner::number()
{
    const auto belongs = [this](std::size_t index) {
        const char c = rest[index];
        const bool canBeSigned = index == 0 || rest[index - 1] == 'e' || rest[index - 1] == 'E';
        return isWordCharacter(c) || c == '.' || (canBeSigned && (c == '-' || c == '+'));
    };
    std::size_t length = 0;
    while (length < rest.size() && belongs(length))
        ++length;
    const std::string_view found = rest.substr(0, length);
    const std::string_view digits = found.substr(found.starts_with('+') ? 1 : 0);
    Literal value;
    if (digits.find_first_of(".eE") != std::string_view::npos)
        value = parsed<double>(digits, "a number");
    else
    {
        const auto wide = parsed<std::int64_t>(digits, "a number");
        if (wide < std::numeric_limits<std::int32_t>::min() ||
            wide > std::numeric_limits<std::int32_t>::max())
            fail("an integer of 32 bits");
        value = static_cast<std::int32_t>(wide);
    }
    rest.remove_prefix(found.size());
    return value;
}

template <class Number, class... Base>
Number Scanner::parsed(std::string_view digits, const std::string& wanted, Base... base)
{
    Number value{};
    const char* end = digits.data() + digits.size();
    const auto [stopped, error] = std::from_chars(digits.data(), end, value, base...);
    if (error != std::errc() || stopped != end)
        fail(wanted);
    return value;
}

} // namespace standin
