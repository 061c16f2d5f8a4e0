#include "script/failure.h"

namespace script
{

namespace
{

/// Blanks as wide as a text in UTF-8.
std::string blanksFor(const std::string& text)
{
    constexpr unsigned kind = 0xC0;
    constexpr unsigned continuation = 0x80;
    std::string blanks;
    for (const char character : text)
        if (character == '\t')
            blanks += character;
        else if ((static_cast<unsigned char>(character) & kind) != continuation)
            blanks += ' ';
    return blanks;
}

} // namespace

CallFailure::CallFailure(const std::string& message, const std::string& call, std::size_t column)
    : Error(message)
{
    if (!call.empty() && call.find('\n') == std::string::npos && column <= call.size() + 1)
        picture_ = call + "\n" + blanksFor(call.substr(0, column - 1)) + "^";
}

} // namespace script
