#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace standin
{

/// What the host's language has literals for without quotes: nil, booleans, integers, colours and other
/// hexadecimal numbers (unsigned), doubles.
using Literal = std::variant<std::nullptr_t, bool, std::int32_t, std::uint32_t, double>;

/// Reads a declaration from left to right. Spaces count nowhere; names ignore case. What cannot be read
/// throws Error with the whole text, what was wanted and the place.
class Scanner
{
public:
    explicit Scanner(std::string_view text);

    /// Throws Error unless everything has been read.
    void expectEnd();
    [[noreturn]] void fail(const std::string& wanted);

    /// The next character, or 0 at the end.
    char peek();
    /// Takes a character or a keyword if it comes next.
    bool take(char character);
    bool takeKeyword(std::string_view keyword);
    /// Letters, digits and underscores, and no digit in front.
    std::string name(const std::string& wanted);
    /// A literal, if one comes next.
    std::optional<Literal> literal();

    /// Reads what stands between an opening parenthesis, which has been taken, and the closing one.
    template <class ReadItem>
    void list(ReadItem readItem)
    {
        if (take(')'))
            return;
        do
            readItem();
        while (take(','));
        if (!take(')'))
            fail("\",\" or \")\"");
    }

private:
    template <class Predicate>
    std::string_view peekWhile(Predicate belongs);
    std::uint32_t hexadecimal();
    Literal number();
    template <class Number, class... Base>
    Number parsed(std::string_view digits, const std::string& wanted, Base... base);

    std::string_view whole;
    std::string_view rest;
};

} // namespace standin
