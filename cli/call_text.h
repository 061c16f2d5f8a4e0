#pragma once

#include "host/calls/scanner.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace cli
{

/// "@photo.png": the contents of a file.
struct FileName
{
    std::string name;
};

/// A bare name: the variable that a byref parameter writes to.
struct VariableName
{
    std::string name;
};

/// What can stand for an argument: a literal, a text, a file or a variable.
using Term = std::variant<standin::Literal, std::string, FileName, VariableName>;

/// A call as a user of the host's language writes it, taken apart.
struct CallText
{
    std::string name;
    std::vector<Term> arguments;
    std::optional<Term> assigned; ///< what stands behind "="
};

/// Takes apart "Name", "Name(1, -2.5, &hFF, &c88B5C4, true, nil, "text", @file.png, @"a, b.png", x)" and
/// either of them followed by "= value". Throws standin::Error, naming the place, for a text that is no call.
CallText parseCall(std::string_view text);

} // namespace cli
