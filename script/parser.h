#pragma once

#include "script/failure.h"
#include "script/syntax.h"

#include <string>
#include <string_view>

namespace script
{

/// Brackets and blocks can lie so deep in each other; more is refused, so that no text exhausts the stack.
inline constexpr std::size_t deepestNesting = 64;

/// Takes a program apart; `file` is for messages. Throws Failure at the first place that cannot be
/// understood, with what was expected there.
Program parseProgram(std::string_view text, const std::string& file);

/// Takes apart one call or assignment as users of the command line write it: "@FILE" stands for the contents
/// of a file. Its only statement is a `Call` or an `Assignment`. Throws CallFailure for a text that is
/// neither.
Program parseCall(std::string_view text);

} // namespace script
